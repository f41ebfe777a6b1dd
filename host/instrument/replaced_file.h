// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_REPLACED_FILE_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_REPLACED_FILE_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <sys/types.h>

#include "instrument/file_lock.h"

namespace nmos_instrument::host {

/// Who may do what with a file.
struct FileAccess
{
    uid_t owner;
    gid_t group;
    mode_t mode;
};

/// A file whose content is replaced as a whole, by this process alone. A crash at any moment leaves
/// the old or the new content: the text is written to another file, synced, and renamed. All copies
/// share the lock; it ends with the last one.
class ReplacedFile
{
public:
    /// The file need not exist. A symbolic link stays, and its target is replaced. Anything that is
    /// no regular file is refused, and is not opened. Removes what killed processes left behind.
    /// Throws std::runtime_error, which does not name the file.
    explicit ReplacedFile(const std::string& name);

    /// As it was given.
    const std::string& name() const { return name_; }

    /// Nothing if the file does not exist. Throws UnreadableFile, also if it is longer than `limit`.
    std::optional<std::string> read(std::size_t limit) const;

    /// Keeps the mode of the file and, as far as the system allows, its owner and group. Throws
    /// std::system_error; the file then has the old content, or the new one if only its name could
    /// not be synced.
    void replace(std::string_view text) const { install(text, path_); }

    /// The name of the file followed by `ending`, with its folder and without links.
    std::string beside(std::string_view ending) const { return path_ + std::string(ending); }

    /// Writes `text` to the file beside(ending), as replace() does.
    void write_beside(std::string_view ending, std::string_view text) const
    {
        install(text, beside(ending));
    }

    /// Renames the file to beside(ending). Throws std::system_error.
    void rename_beside(std::string_view ending) const;

private:
    void install(std::string_view text, const std::string& target) const;
    void remove_unfinished() const;

    std::string name_;
    std::string path_; ///< without links, so that it means the same file for ever
    std::optional<FileAccess> access_at_start_; ///< for when the file has been moved away
    std::shared_ptr<const FileLock> lock_;
};

} // namespace nmos_instrument::host

#endif
