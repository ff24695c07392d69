// platform/base/RegularFile.h
//
// Reading a file whole. Only regular files: whatever else bears a name could block or never end.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/Descriptor.h"

/// Opens a regular file for reading.
/// @param path  in the file system's encoding.
/// @param size  receives its size in bytes.
/// @return the descriptor; none, with errno set, for what is no regular file or cannot be opened.
CDescriptor OpenRegularFile(const std::string& path, std::uint64_t& size) noexcept;

/// Reads a regular file whole. Any thread.
/// @param most   the largest size to be read, in bytes.
/// @param bytes  receives the contents; less than the size when the file is cut off meanwhile.
/// @return 0, or an error of the C library: EFBIG for a larger file, EINVAL for what is no regular
///         file. std::bad_alloc when there is no memory.
int ReadRegularFile(const std::string& path, std::uint64_t most, std::vector<std::uint8_t>& bytes);
