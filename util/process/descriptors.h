/// Closing and moving descriptors between fork and exec: every function here is safe in a signal handler,
/// takes no lock and allocates no memory. Internal.
#pragma once

#include <cstddef>

namespace vesk {
namespace descriptors {

/// Closes all descriptors but the `count` ones of `kept`, which is sorted in ascending order, without
/// duplicates and without negative numbers. The time depends on how many are open, not on how many could be.
/// `limit`, one more than the highest possible descriptor, is used only on a system that cannot list the open
/// ones.
void closeAllBut(const int* kept, std::size_t count, int limit);

/// The methods of closeAllBut, best first. False if the system does not support the method; then nothing is
/// closed.
bool closeByRange(const int* kept, std::size_t count);
bool closeByListing(const int* kept, std::size_t count);
void closeOneByOne(const int* kept, std::size_t count, int limit);

/// Makes entry i descriptor i for each entry that is an open descriptor, and closes the entries; they may
/// overlap the numbers from 0 to `count` - 1 in any way. `scratch` has room for `count` numbers.
void arrange(const int* entries, int* scratch, int count);

}  // namespace descriptors
}  // namespace vesk
