// What the journal of a job says: how its files are to be made, which pages are on disk and which
// of them are in a finished file. Enough to make the missing files when the job itself cannot any
// more.
#pragma once

#include "scanlib/base/spool.h"
#include "scanlib/session/job_settings.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace orva {

/// The spooled pages of one job. Any thread may store; the rest is for the writing thread.
class JobJournal
{
public:
    /// Makes the job's folder and writes down the output settings.
    Status begin(const std::filesystem::path& spoolRoot, const OutputSettings& output);
    /// Puts the payload on disk; page.file tells where it is, page.bytes is not needed any more.
    Status store(EncodedPage& page);
    /// The file that takes the pages of a stream from now on has this name, without extension.
    void noteName(const std::string& stream, const std::string& stem);
    /// Puts the recognised text of a stored page on disk beside its payload; page.textFile tells
    /// where, page.text is not needed any more. Only a page that was not read has no such file.
    Status storeText(EncodedPage& page);
    /// The hidden file holds the pages and is about to get its name. Written down first: after a
    /// crash between the two, the same file under that name tells that the pages are saved.
    void noteCommit(const std::filesystem::path& hidden, const std::filesystem::path& file,
        const std::vector<EncodedPage>& pages);
    /// The file did not get its name: what noteCommit said last is void.
    void noteCommitFailed();
    /// The pages are in a finished file: their payloads are deleted.
    void pagesSaved(const std::vector<EncodedPage>& pages);
    /// The pages are not wanted: their payloads are deleted. Any thread.
    void pagesDropped(const std::vector<EncodedPage>& pages);
    /// Deletes the folder, unless it still holds pages that are in no file.
    void close();

    /// Takes over what a dead job left. false when a living one holds the folder.
    bool takeOver(const std::filesystem::path& folder);
    struct Leftover
    {
        bool readable = false; ///< the output settings are known
        OutputSettings output;
        std::vector<EncodedPage> unsaved; ///< whole payloads, in page order
        unsigned long long files = 0; ///< that the job had finished
        std::map<std::string, std::string> names; ///< of documents, the last one of each stream
    };
    Leftover leftover() const;
    void remove() { m_folder.remove(); }

private:
    SpoolFolder m_folder;
    std::mutex m_mutex;
    int m_payloads = 0; ///< stored so far; makes their names unique
    int m_unsaved = 0;
};

} // namespace orva
