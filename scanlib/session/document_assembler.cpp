#include "scanlib/session/document_assembler.h"

#include "scanlib/base/library_log.h"

#include <ctime>
#include <utility>

namespace orva {

namespace {

std::string extensionOf(FileFormat format)
{
    for (const FormatName& name : kFormatNames) {
        if (name.format == format) {
            return std::string(name.extension);
        }
    }
    return "dat";
}

} // namespace

DocumentAssembler::DocumentAssembler(const OutputSettings& output, const OutputFormat& format,
    JobJournal& journal, FileSaved onSaved, unsigned long long filesBefore)
    : m_output(output)
    , m_format(format)
    , m_journal(journal)
    , m_onSaved(std::move(onSaved))
    , m_store(output.folder, output.sameName)
    , m_names(output.naming, filesBefore)
    , m_extension(extensionOf(output.format))
{
}

Status DocumentAssembler::reserveNext(OpenDocument& document, const std::string& stream)
{
    if (!m_names.passesOverTakenNames()) {
        return m_store.reserve(m_names.next(stream), m_extension, document.place);
    }
    Status status;
    bool taken = true;
    while (status.ok() && taken) {
        status = m_store.reserveIfFree(m_names.next(stream), m_extension, document.place, taken);
    }
    return status;
}

Status DocumentAssembler::begin(OpenDocument& document)
{
    document.writer = m_format.makeWriter();
    DocumentInfo info;
    info.title = document.place.stem();
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
    Status status = reserveNext(document, page.stream);
    if (status.ok()) {
        status = begin(document);
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

Status DocumentAssembler::addToDocument(EncodedPage page)
{
    OpenDocument& document = m_open[page.stream];
    Status status;
    if (!document.writer) {
        status = reserveNext(document, page.stream);
        if (status.ok()) {
            status = begin(document);
        }
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
