/// Closing and moving descriptors between fork and exec. All functions are async-signal-safe, take no locks
/// and allocate no memory. Internal.
#pragma once

#include <cstddef>

namespace vesk {
namespace descriptors {

/// Closes all descriptors except the `count` ones in `kept`, which is sorted in ascending order, without
/// duplicates or negative numbers. The time depends on the number of open descriptors. `limit`, one more than
/// the highest possible descriptor, is used only if the system cannot list the open ones.
void closeAllBut(const int* kept, std::size_t count, int limit);

/// The methods of closeAllBut, best first. Return false, with nothing closed, if the system does not support
/// the method.
bool closeByRange(const int* kept, std::size_t count);
bool closeByListing(const int* kept, std::size_t count);
void closeOneByOne(const int* kept, std::size_t count, int limit);

/// Moves each entry i that is an open descriptor to descriptor i; the entries may overlap the numbers from 0
/// to `count` - 1 in any way. `scratch` has room for `count` numbers.
void arrange(const int* entries, int* scratch, int count);

}  // namespace descriptors
}  // namespace vesk
