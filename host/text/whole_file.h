// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_TEXT_WHOLE_FILE_H
#define NMOS_INSTRUMENT_HOST_TEXT_WHOLE_FILE_H

#include <cstddef>
#include <stdexcept>
#include <string>

namespace nmos_instrument::host {

/// A file that cannot be read. what() gives the reason but does not name the file.
class UnreadableFile : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// What is left to read of an open file. Reads at most `limit` bytes. Throws UnreadableFile.
std::string read_to_end(int descriptor, std::size_t limit);

/// The bytes of a file; "-" is standard input. Reads at most `limit` bytes, so that an endless
/// device is refused like any other file that is too large. Throws UnreadableFile.
std::string read_whole_file(const std::string& name, std::size_t limit);

} // namespace nmos_instrument::host

#endif
