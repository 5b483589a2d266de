/// Functions of the system that a test program has linked in the place of the real ones (-Wl,--wrap).
#pragma once

/// `name` now evaluates the expression that follows its parameters; __real_NAME is the system's own.
#define WRAPPED(Result, name, parameters, ...) \
  extern "C" Result __real_##name parameters;  \
  extern "C" Result __wrap_##name parameters;  \
  extern "C" Result __wrap_##name parameters { \
    return __VA_ARGS__;                        \
  }
