/// Annotations with which clang checks that a field is accessed only while its lock is held
/// (-Wthread-safety). Other compilers ignore them.
///
///   Mutex m_mutex;
///   Items m_items FOKRAZO_GUARDED_BY(m_mutex);
///   Item take(Items::iterator place) FOKRAZO_REQUIRES(m_mutex);
#pragma once

#if defined(__clang__)
#define FOKRAZO_THREAD_ANNOTATION(...) __attribute__((__VA_ARGS__))
#else
/// Used by the other macros.
#define FOKRAZO_THREAD_ANNOTATION(...)
#endif

// On classes.

/// A lock. `name` is its kind in compiler messages: "mutex".
#define FOKRAZO_CAPABILITY(name) FOKRAZO_THREAD_ANNOTATION(capability(name))
/// A guard that takes a lock in its constructor and releases it in its destructor.
#define FOKRAZO_SCOPED_CAPABILITY FOKRAZO_THREAD_ANNOTATION(scoped_lockable)

// On fields and variables.

/// Accessed only while that lock is held.
#define FOKRAZO_GUARDED_BY(lock) FOKRAZO_THREAD_ANNOTATION(guarded_by(lock))
/// A pointer whose target, not the pointer itself, is guarded by that lock.
#define FOKRAZO_PT_GUARDED_BY(lock) FOKRAZO_THREAD_ANNOTATION(pt_guarded_by(lock))

// On functions. Without an argument they refer to the object itself, or to a guard's lock.

/// The caller holds the locks, before and after.
#define FOKRAZO_REQUIRES(...) FOKRAZO_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
/// The caller does not hold the locks.
#define FOKRAZO_EXCLUDES(...) FOKRAZO_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
/// Takes the locks, and returns with them held.
#define FOKRAZO_ACQUIRE(...) FOKRAZO_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
/// Takes the lock if the result is the first argument: FOKRAZO_TRY_ACQUIRE(true).
#define FOKRAZO_TRY_ACQUIRE(...) FOKRAZO_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
/// Releases the locks.
#define FOKRAZO_RELEASE(...) FOKRAZO_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
/// Returns a reference or a pointer to that lock.
#define FOKRAZO_RETURN_CAPABILITY(lock) FOKRAZO_THREAD_ANNOTATION(lock_returned(lock))
/// Disables the check in one function that the compiler cannot follow. Say why in a comment.
#define FOKRAZO_NO_THREAD_SAFETY_ANALYSIS FOKRAZO_THREAD_ANNOTATION(no_thread_safety_analysis)
