#pragma once

#include <cstddef>
#include <cstdint>

// libFuzzer's interface for mutators. The build without libFuzzer implements the first function itself.

/// Changes random bytes of an input in place.
/// @param size of the input, in bytes
/// @param most maximum size of the result, and size of the buffer
/// @return the size of the result, in bytes
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

/// Changes an input of a certain structure. Only targets with structured inputs define it; it is null in the
/// others.
extern "C" [[gnu::weak]] std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most,
                                                             unsigned seed);
