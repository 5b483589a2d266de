/// What the library exports. Everything else is hidden.
#pragma once

/// Exports a class with all its members, a function or a variable.
#define FOKRAZO_API __attribute__((visibility("default")))
/// Lets the compiler check printf arguments. `text` and `first` are the positions of the format and of its
/// first argument, counted from 1; `this` counts.
#define FOKRAZO_PRINTF(text, first) __attribute__((format(printf, text, first)))
