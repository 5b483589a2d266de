/// What the library exports. Everything else is hidden.
#pragma once

/// Marks what is exported: a class with all that is in it, a function, a variable.
#define FOKRAZO_API __attribute__((visibility("default")))
/// Lets the compiler check a printf format: `text` and `first` count from 1, `this` included.
#define FOKRAZO_PRINTF(text, first) __attribute__((format(printf, text, first)))
