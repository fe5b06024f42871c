#include "scanlib/session/document_assembler.h"

#include "scanlib/base/library_log.h"
#include "scanlib/writers/metadata.h"

#include <sys/stat.h>

#include <ctime>
#include <utility>

namespace orva {

namespace {

/// Behind the names of files that were made of the pages of a dead job.
constexpr const char* kRecoveredMark = "_恢复";

/// Of pages that could not be read.
constexpr const char* kPictureExtension = "jpg";

std::string extensionOf(FileFormat format)
{
    for (const FormatName& name : kFormatNames) {
        if (name.format == format) {
            return std::string(name.extension);
        }
    }
    return "dat";
}

/// When the page was put on disk.
std::chrono::system_clock::time_point fileTime(const std::filesystem::path& file)
{
    struct stat info
    {
    };
    if (stat(file.c_str(), &info) != 0) {
        return std::chrono::system_clock::now();
    }
    const auto sinceEpoch =
        std::chrono::seconds(info.st_mtim.tv_sec) + std::chrono::nanoseconds(info.st_mtim.tv_nsec);
    return std::chrono::system_clock::time_point(
        std::chrono::duration_cast<std::chrono::system_clock::duration>(sinceEpoch));
}

} // namespace

DocumentAssembler::DocumentAssembler(const OutputSettings& output, const OutputFormat& format,
    JobJournal& journal, FileSaved onSaved)
    : m_output(output)
    , m_format(format)
    , m_journal(journal)
    , m_onSaved(std::move(onSaved))
    , m_store(output.folder, output.sameName)
    , m_names(output.naming)
    , m_extension(extensionOf(output.format))
{
}

DocumentAssembler::DocumentAssembler(const OutputSettings& output, const OutputFormat& format,
    JobJournal& journal, FileSaved onSaved, Resumption resumed)
    : m_output(output)
    , m_format(format)
    , m_journal(journal)
    , m_onSaved(std::move(onSaved))
    , m_store(output.folder, SameName::kAddNumber)
    , m_resumed(std::move(resumed))
    , m_names(output.naming, m_resumed->files, [this] { return m_scanTime; })
    , m_extension(extensionOf(output.format))
{
}

/// What the job itself would have named the file, then the mark.
Status DocumentAssembler::reserveResumed(
    OpenDocument& document, const EncodedPage& page, const std::string& extension)
{
    m_scanTime = fileTime(page.file);
    const auto begun = m_resumed->names.find(page.stream);
    std::string stem;
    if (m_output.multiPage && begun != m_resumed->names.end()) {
        stem = begun->second;
    } else {
        stem = m_names.next(page.stream);
        bool taken = m_names.passesOverTakenNames();
        while (taken) {
            if (Status status = m_store.reserveIfFree(stem, extension, document.place, taken);
                !status.ok()) {
                return status;
            }
            stem = taken ? m_names.next(page.stream) : stem;
        }
        document.place.abandon();
    }
    return m_store.reserve(stem + kRecoveredMark, extension, document.place);
}

Status DocumentAssembler::reserveNext(
    OpenDocument& document, const EncodedPage& page, const std::string& extension)
{
    if (m_resumed) {
        return reserveResumed(document, page, extension);
    }
    Status status;
    if (!m_names.passesOverTakenNames()) {
        status = m_store.reserve(m_names.next(page.stream), extension, document.place);
    } else {
        bool taken = true;
        while (status.ok() && taken) {
            status =
                m_store.reserveIfFree(m_names.next(page.stream), extension, document.place, taken);
        }
    }
    if (status.ok() && m_output.multiPage) {
        m_journal.noteName(page.stream, document.place.stem());
    }
    return status;
}

bool DocumentAssembler::isUnread(const EncodedPage& page) const
{
    return m_format.makePictureWriter != nullptr && page.textFile.empty();
}

Status DocumentAssembler::begin(OpenDocument& document)
{
    return begin(document, m_format.makeWriter());
}

Status DocumentAssembler::begin(OpenDocument& document, std::unique_ptr<DocumentWriter> writer)
{
    document.writer = std::move(writer);
    DocumentInfo info;
    info.title = plainTitle(document.place.stem());
    info.createdUnixSeconds = std::time(nullptr);
    return document.writer->begin(document.place.hiddenFile(), info);
}

Status DocumentAssembler::complete(OpenDocument& document)
{
    if (Status status = document.writer->finish(); !status.ok()) {
        return status;
    }
    document.writer.reset();
    m_journal.noteCommit(document.place.hiddenFile(), document.place.finalFile(), document.pages);
    std::filesystem::path file;
    if (Status status = m_store.commit(document.place, file); !status.ok()) {
        m_journal.noteCommitFailed();
        return status;
    }
    m_journal.pagesSaved(document.pages);
    document.pages.clear();
    m_onSaved(file.string());
    return {};
}

/// The file under the writer cannot be trusted after a failure. The payloads are still there, so
/// the document is made again of the pages that it held; that needs no more space than it had.
Status DocumentAssembler::rebuild(OpenDocument& document)
{
    std::vector<EncodedPage> pages = std::move(document.pages);
    const std::string stem = document.place.stem();
    document.pages.clear();
    document.writer.reset();
    document.place.abandon();
    if (pages.empty()) {
        return {};
    }
    Status status = m_store.reserve(stem, m_extension, document.place);
    if (status.ok()) {
        status = begin(document);
    }
    for (std::size_t index = 0; status.ok() && index < pages.size(); ++index) {
        status = document.writer->addPage(pages[index]);
        document.pages.push_back(std::move(pages[index]));
    }
    return status.ok() ? complete(document) : status;
}

Status DocumentAssembler::addAsFile(EncodedPage page)
{
    OpenDocument document;
    const bool unread = isUnread(page);
    Status status = reserveNext(document, page, unread ? kPictureExtension : m_extension);
    if (status.ok()) {
        status = begin(document, unread ? m_format.makePictureWriter() : m_format.makeWriter());
    }
    if (status.ok()) {
        status = document.writer->addPage(page);
    }
    if (!status.ok()) {
        return status;
    }
    document.pages.push_back(std::move(page));
    return complete(document);
}

Status DocumentAssembler::addPictureBeside(const OpenDocument& document, const EncodedPage& page)
{
    OpenDocument picture;
    const std::string stem = document.place.stem() + "_第" + std::to_string(page.number) + "页";
    Status status = m_store.reserve(stem, kPictureExtension, picture.place);
    if (status.ok()) {
        status = begin(picture, m_format.makePictureWriter());
    }
    if (status.ok()) {
        status = picture.writer->addPage(page);
    }
    if (!status.ok()) {
        return status;
    }
    picture.pages.push_back(page);
    return complete(picture);
}

Status DocumentAssembler::addToDocument(EncodedPage page)
{
    OpenDocument& document = m_open[page.stream];
    Status status;
    if (!document.writer) {
        status = reserveNext(document, page, m_extension);
        if (status.ok()) {
            status = begin(document);
        }
    }
    if (status.ok() && isUnread(page)) {
        if (Status kept = addPictureBeside(document, page); !kept.ok()) {
            return kept;
        }
        return document.writer->addPage(page);
    }
    if (status.ok()) {
        status = document.writer->addPage(page);
    }
    if (status.ok()) {
        document.pages.push_back(std::move(page));
        return {};
    }
    libraryLog(
        "page %d: %s; the document is completed without it", page.number, status.detail().c_str());
    if (const Status again = rebuild(document); !again.ok()) {
        libraryLog("the document cannot be completed: %s", again.detail().c_str());
    }
    m_open.erase(page.stream);
    return status;
}

Status DocumentAssembler::add(EncodedPage page)
{
    return m_output.multiPage ? addToDocument(std::move(page)) : addAsFile(std::move(page));
}

Status DocumentAssembler::finish()
{
    Status first;
    for (auto& [stream, document] : m_open) {
        if (document.pages.empty()) {
            continue; // gives its name back
        }
        if (Status status = complete(document); !status.ok()) {
            libraryLog("%s; completing without the last page", status.detail().c_str());
            first = first.ok() ? status : first;
            if (!document.pages.empty()) {
                document.pages.pop_back();
            }
            if (const Status again = rebuild(document); !again.ok()) {
                libraryLog("the document cannot be completed: %s", again.detail().c_str());
            }
        }
    }
    m_open.clear();
    return first;
}

} // namespace orva
