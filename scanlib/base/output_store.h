// Puts finished files into the output folder: reserves a name, gives a hidden file beside it to
// write into, and shows it under its name only when it is complete and on disk.
#pragma once

#include "scanlib/base/status.h"

#include <filesystem>
#include <functional>
#include <string>

namespace orva {

/// What happens when a file of the name is there already.
enum class SameName
{
    kReplace, ///< the old file is replaced, in one step, when the new one is complete
    kAddNumber, ///< the new one becomes "name_2", "name_3" ...; a file is never replaced
};

/// A name that this process holds. Given up, with the hidden file, when it dies without a commit.
class Reservation
{
public:
    Reservation() = default;
    ~Reservation();
    Reservation(Reservation&& other) noexcept;
    Reservation& operator=(Reservation&& other) noexcept;
    Reservation(const Reservation&) = delete;
    Reservation& operator=(const Reservation&) = delete;

    /// Where the writer writes: an empty file in the output folder, hidden.
    const std::filesystem::path& hiddenFile() const { return m_hidden; }
    /// Its path as far as it is known now; another program may still take the name.
    const std::filesystem::path& finalFile() const { return m_final; }
    /// Name without extension as far as it is known now.
    std::string stem() const { return m_final.stem().string(); }
    void abandon();

private:
    friend class OutputStore;
    std::filesystem::path m_final;
    std::filesystem::path m_hidden;
    std::string m_askedStem; ///< before a number was added
    bool m_exclusive = false; ///< must not replace a file
    int m_lock = -1; ///< keeps the hidden file locked, so that others can tell it from a leftover
};

/// One output folder, one job. One thread at a time; other jobs and processes may use the folder at
/// the same time.
class OutputStore
{
public:
    OutputStore(std::filesystem::path folder, SameName sameName);

    /// Before the paper is fed. kFolderMissing, kFolderReadOnly, kDiskFull (less than a megabyte).
    Status check() const;
    /// Takes "stem.extension" or, when numbers are added, the first free "stem_N.extension".
    /// kFolderMissing, kFolderReadOnly, kDiskFull, kBadFileName, kNoFreeName, kFileWrite.
    Status reserve(const std::string& stem, const std::string& extension, Reservation& out);
    /// As it is or not at all, in both modes: ok with taken set when the name is in use.
    Status reserveIfFree(
        const std::string& stem, const std::string& extension, Reservation& out, bool& taken) const;
    /// Shows the hidden file, which its writer has flushed, under its name and tells the full path.
    /// After a failure the reservation still holds the hidden file.
    Status commit(Reservation& reservation, std::filesystem::path& file);

private:
    Status reserveNumbered(const std::string& stem, const std::string& extension, Reservation& out);
    Status reserveReplacing(const std::string& name, Reservation& out) const;
    enum class Attempt
    {
        kTaken,
        kHeld,
        kFailed
    };
    Attempt tryReserve(const std::string& name, Reservation& out, Status& failure) const;
    std::filesystem::path hiddenPath(const std::string& name, const std::string& suffix) const;

    const std::filesystem::path m_folder;
    const SameName m_sameName;
};

/// The result code for an errno of a file operation in an output or spool folder.
Status fileFailure(int error, const std::filesystem::path& path);
/// Removes hidden files of dead jobs from the folder; what a living job writes is left alone.
void removeHiddenLeftovers(const std::filesystem::path& folder);
/// Makes what is in the folder's directory survive a loss of power.
void flushFolder(const std::filesystem::path& folder);

} // namespace orva
