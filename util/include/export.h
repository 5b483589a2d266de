/// What the library exports. Everything else is hidden.
#pragma once

#define FOKRAZO_API __attribute__((visibility("default")))
/// Lets the compiler check a printf format: `text` and `first` count from 1, `this` included.
#define FOKRAZO_PRINTF(text, first) __attribute__((format(printf, text, first)))
