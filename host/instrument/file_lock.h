// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_FILE_LOCK_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_FILE_LOCK_H

#include <string>

#include "instrument/descriptor.h"

namespace nmos_instrument::host {

/// Keeps a file for this process: a lock on another file beside it, "<file>.lock". That one is
/// removed at the end; a killed process leaves it behind, unlocked, which does no harm. It keeps off
/// other processes only: have one object for each file.
class FileLock
{
public:
    /// Throws std::runtime_error, which names the process that has the file.
    explicit FileLock(const std::string& file);
    ~FileLock();

    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    const std::string name_;
    Descriptor descriptor_;
};

} // namespace nmos_instrument::host

#endif
