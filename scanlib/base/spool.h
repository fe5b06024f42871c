// Finished pages of running jobs, one folder a job, on disk before they are reported: when the
// process dies, they are still there. A journal beside them tells what they are; its lines are the
// session's.
#pragma once

#include "scanlib/base/status.h"

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

namespace orva {

/// One job's folder. Held by a lock as long as the object lives. Payloads guard against the death
/// of the process. Writing them to the medium is begun at once but not waited for: on a disk that
/// turns, a wait a side (payload, journal, folder) would halve the speed of a fast feeder, and it
/// would guard the last seconds before a loss of power only. The output file is flushed.
class SpoolFolder
{
public:
    SpoolFolder() = default;
    ~SpoolFolder();
    SpoolFolder(const SpoolFolder&) = delete;
    SpoolFolder& operator=(const SpoolFolder&) = delete;

    /// A new folder below the root, which is made when it is missing. When the root cannot be used,
    /// the system's temporary folder serves. kDiskFull, kFileWrite, kFolderReadOnly.
    Status create(const std::filesystem::path& root);
    /// Takes over the folder of a job that has died. false when some process holds it.
    bool takeOver(const std::filesystem::path& folder);

    /// Writes one payload under a name that was not used before. Any thread. After a failure
    /// nothing is left of it.
    Status store(const std::string& name, const std::vector<std::uint8_t>& bytes,
        std::filesystem::path& file) const;
    /// Adds a line (without line feeds) to the journal. Any thread.
    Status note(const std::string& line);
    /// The complete lines of the journal; a line that was cut off by a crash is left out.
    std::vector<std::string> journal() const;

    const std::filesystem::path& path() const { return m_folder; }
    /// Deletes the folder with all in it and lets go of it.
    void remove();

private:
    bool lockJournal(int flags);

    std::filesystem::path m_folder;
    mutable std::mutex m_mutex;
    int m_journal = -1;
    bool m_cutLine = false; ///< the journal may end in half a line
};

/// Folders below the root (and below the temporary folder that serves for it), whoever holds them;
/// oldest first.
std::vector<std::filesystem::path> spoolFolders(const std::filesystem::path& root);

} // namespace orva
