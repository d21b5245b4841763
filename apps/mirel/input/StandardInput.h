/// Standard input, as it comes.
#pragma once

#include <cstddef>
#include <vector>

namespace mirel {

/// Waits until there is something on standard input and reads what fits into the block.
///
/// @return  number of bytes; 0 at the end
///
/// Throws `UsageError` when it cannot be read, and `Interrupted` when the user no longer wants to wait.
std::size_t readSome(std::vector<char>& block);

}  // namespace mirel
