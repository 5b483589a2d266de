/// The system's threads interface. Internal. Uses only weak references, so that the library works in a
/// program without a threads library. Call these functions only after threadsSupported
/// (util/thread/thread_internal.h) returned true, or in a thread.
#pragma once

#include <pthread.h>

#pragma weak pthread_attr_destroy
#pragma weak pthread_attr_init
#pragma weak pthread_attr_setschedpolicy
#pragma weak pthread_attr_setstacksize
#pragma weak pthread_cancel
#pragma weak pthread_cond_broadcast
#pragma weak pthread_cond_destroy
#pragma weak pthread_cond_init
#pragma weak pthread_cond_signal
#pragma weak pthread_cond_timedwait
#pragma weak pthread_cond_wait
#pragma weak pthread_create
#pragma weak pthread_detach
#pragma weak pthread_getschedparam
#pragma weak pthread_getspecific
#pragma weak pthread_join
#pragma weak pthread_key_create
#pragma weak pthread_key_delete
#pragma weak pthread_mutex_clocklock
#pragma weak pthread_mutex_destroy
#pragma weak pthread_mutex_init
#pragma weak pthread_mutex_lock
#pragma weak pthread_mutex_trylock
#pragma weak pthread_mutex_unlock
#pragma weak pthread_mutexattr_destroy
#pragma weak pthread_mutexattr_init
#pragma weak pthread_mutexattr_settype
#pragma weak pthread_once
#pragma weak pthread_setcancelstate
#pragma weak pthread_setschedparam
#pragma weak pthread_setspecific
#pragma weak pthread_testcancel
