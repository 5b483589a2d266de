/// The family's names for liblber's functions (lber.h), and two additions: a flatten without a copy and a
/// read with a time-out. Nothing here throws.
/// Thread-safety: as liblber: one thread at a time for an element or a socket buffer.
#pragma once

#include <lber.h>

#include <fokrazo/export.h>

// liblber's functions, unchanged.

inline constexpr auto& qtr_ber_alloc_t = ber_alloc_t;
inline constexpr auto& qtr_ber_bvfree = ber_bvfree;
inline constexpr auto& qtr_ber_flatten = ber_flatten;
inline constexpr auto& qtr_ber_flatten2 = ber_flatten2;
inline constexpr auto& qtr_ber_free = ber_free;
inline constexpr auto& qtr_ber_get_option = ber_get_option;
inline constexpr auto& qtr_ber_init2 = ber_init2;
inline constexpr auto& qtr_ber_memalloc = ber_memalloc;
inline constexpr auto& qtr_ber_memcalloc = ber_memcalloc;
inline constexpr auto& qtr_ber_memfree = ber_memfree;
inline constexpr auto& qtr_ber_memvfree = ber_memvfree;
inline constexpr auto& qtr_ber_peek_tag = ber_peek_tag;
inline constexpr auto& qtr_ber_printf = ber_printf;
inline constexpr auto& qtr_ber_reset = ber_reset;
inline constexpr auto& qtr_ber_scanf = ber_scanf;
inline constexpr auto& qtr_ber_skip_element = ber_skip_element;
inline constexpr auto& qtr_ber_sockbuf_add_io = ber_sockbuf_add_io;
inline constexpr auto& qtr_ber_sockbuf_free = ber_sockbuf_free;
inline constexpr auto& qtr_ber_sockbuf_remove_io = ber_sockbuf_remove_io;
inline constexpr auto& qtr_ber_write = ber_write;

/// Moves the bytes of a finished element to `*out` without a copy. The caller frees `*out` with
/// qtr_ber_bvfree, and still frees the element, which no longer has a buffer. The bytes are not
/// NUL-terminated. Returns 0, or -1 with nothing changed, for a null argument, an open sequence or lack of
/// memory.
FOKRAZO_API int qtr_fast_ber_flatten(BerElement* ber, berval** out);

// A socket buffer from qtr_ber_sockbuf_alloc has a read time-out, initially 0, and a non-blocking flag. Both
// are kept in an extra layer above those of liblber.

/// As ber_sockbuf_alloc; null if there is no memory. Free it with qtr_ber_sockbuf_free.
FOKRAZO_API Sockbuf* qtr_ber_sockbuf_alloc();

/// As ber_sockbuf_ctrl, with two more options: 15 copies the time-out to `argument`, 16 sets it from
/// `argument`, or to 0 if that is null. The time-out is two ints, seconds and microseconds. Both return 1, or
/// -1 for a buffer that is not from qtr_ber_sockbuf_alloc. liblber's option 4 (non-blocking) also sets the
/// flag.
FOKRAZO_API int qtr_ber_sockbuf_ctrl(Sockbuf* buffer, int option, void* argument);
/// The additional options.
constexpr int QTR_SB_OPT_GET_TIMEOUT = 15;
constexpr int QTR_SB_OPT_SET_TIMEOUT = 16;

/// The stream layer. Add it at LBER_SBIOD_LEVEL_PROVIDER with a pointer to the descriptor, which it then
/// owns. Unless the buffer is non-blocking, a read waits for input until the time-out and then fails with
/// ETIME; with a time-out of 0 it does not wait at all. Writing to a socket raises no SIGPIPE.
FOKRAZO_API extern Sockbuf_IO qtr_ber_sockbuf_io_tcp;

namespace vesk {
using ::qtr_ber_sockbuf_alloc;
using ::qtr_ber_sockbuf_ctrl;
using ::qtr_fast_ber_flatten;
}  // namespace vesk
