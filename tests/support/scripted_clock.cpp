#include "util/include/clock.h"
