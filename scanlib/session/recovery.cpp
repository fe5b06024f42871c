#include "scanlib/session/recovery.h"

#include "scanlib/base/library_log.h"
#include "scanlib/base/output_store.h"
#include "scanlib/session/document_assembler.h"
#include "scanlib/session/job_journal.h"

#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <exception>
#include <utility>

namespace orva {

namespace {

constexpr std::time_t kKeepSeconds = std::time_t { 7 } * 24 * 60 * 60;

bool isOld(const std::filesystem::path& folder)
{
    struct stat info
    {
    };
    return stat(folder.c_str(), &info) == 0 && std::time(nullptr) - info.st_mtime > kKeepSeconds;
}

/// Not the fault of the one page: the others would meet it, too.
bool concernsAll(const Status& status)
{
    return status.code() != kDamagedPage && status.code() != kFileWrite;
}

Status writePages(
    JobJournal& journal, JobJournal::Leftover& left, const PageTools& tools, int& files)
{
    const OutputFormat* const format = tools.findOutputFormat(left.output.format);
    if (format == nullptr) {
        return { kFormatNotSupported, "no writer for the format" };
    }
    const auto tell = [&](const std::string& file) {
        ++files;
        libraryLog("recovered pages of an interrupted job: %s", file.c_str());
    };
    DocumentAssembler assembler(
        left.output, *format, journal, tell, { left.files, std::move(left.names) });
    Status first;
    for (EncodedPage& page : left.unsaved) {
        if (Status status = assembler.add(std::move(page)); !status.ok()) {
            first = first.ok() ? status : first;
            if (concernsAll(status)) {
                break;
            }
        }
    }
    const Status finished = assembler.finish();
    return first.ok() ? finished : first;
}

int recoverJob(const std::filesystem::path& folder, const PageTools& tools)
{
    JobJournal journal;
    if (!journal.takeOver(folder)) {
        return 0; // its job is alive
    }
    JobJournal::Leftover left = journal.leftover();
    if (left.readable) {
        removeHiddenLeftovers(left.output.folder);
    }
    if (left.unsaved.empty()) {
        journal.remove();
        return 0;
    }
    int files = 0;
    const Status status = left.readable ? writePages(journal, left, tools, files)
                                        : Status(kDamagedPage, "the journal cannot be read");
    if (status.ok()) {
        journal.remove();
    } else {
        libraryLog("pages in %s stay: %s", folder.c_str(), status.detail().c_str());
    }
    return files;
}

} // namespace

int recoverJobs(
    const std::filesystem::path& spoolRoot, const PageTools& tools, const CancelToken& cancel)
{
    int files = 0;
    for (const std::filesystem::path& folder : spoolFolders(spoolRoot)) {
        if (cancel.cancelled()) {
            break;
        }
        try {
            files += recoverJob(folder, tools);
        } catch (const std::exception& error) {
            libraryLog("recovery of %s: %s", folder.c_str(), error.what());
        }
    }
    return files;
}

Status clearSpool(const std::filesystem::path& spoolRoot)
{
    Status result;
    for (const std::filesystem::path& folder : spoolFolders(spoolRoot)) {
        JobJournal journal;
        if (!journal.takeOver(folder)) {
            if (isOld(folder)) {
                rmdir(
                    folder.c_str()); // of a job that died before its journal; else it is not empty
            }
            continue;
        }
        const std::size_t unsaved = journal.leftover().unsaved.size();
        if (unsaved != 0 && !isOld(folder)) {
            continue;
        }
        if (unsaved != 0) {
            libraryLog("%s: %zu pages could not be saved for a week and are deleted",
                folder.c_str(), unsaved);
        }
        journal.remove();
        std::error_code error;
        if (std::filesystem::exists(folder, error)) {
            result = { kFileWrite, folder.string() + " cannot be deleted" };
        }
    }
    return result;
}

} // namespace orva
