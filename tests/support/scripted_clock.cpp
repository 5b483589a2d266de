#include "util/thread/clock.h"
