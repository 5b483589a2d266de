/// Failures of the stand-in itself.
#pragma once

#include "daemon/error.h"

namespace standin {

using brondalt::Error;

}  // namespace standin
