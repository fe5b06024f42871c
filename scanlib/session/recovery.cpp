#include "scanlib/session/recovery.h"

#include "scanlib/base/library_log.h"
#include "scanlib/base/output_store.h"
#include "scanlib/session/document_assembler.h"
#include "scanlib/session/job_journal.h"

#include <sys/stat.h>

#include <ctime>
#include <exception>
#include <utility>

namespace orva {

namespace {

constexpr std::time_t kKeepSeconds = 7 * 24 * 60 * 60;

bool isOld(const std::filesystem::path& folder)
{
    struct stat info
    {
    };
    return stat(folder.c_str(), &info) == 0 && std::time(nullptr) - info.st_mtime > kKeepSeconds;
}

Status writePages(
    JobJournal& journal, JobJournal::Leftover& left, const PageTools& tools, int& files)
{
    const OutputFormat* const format = tools.findOutputFormat(left.output.format);
    if (format == nullptr) {
        return { kFormatNotSupported, "no writer for the format" };
    }
    left.output.sameName = SameName::kAddNumber;
    DocumentAssembler assembler(left.output, *format, journal, [&](const std::string& file) {
        ++files;
        libraryLog("recovered %s", file.c_str());
    });
    for (EncodedPage& page : left.unsaved) {
        if (Status status = assembler.add(std::move(page)); !status.ok()) {
            return status;
        }
    }
    return assembler.finish();
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
            continue;
        }
        if (!journal.leftover().unsaved.empty() && !isOld(folder)) {
            continue;
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
