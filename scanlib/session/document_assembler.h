// Makes output files of the pages of a job: one file a page, or one document (one a stream) for
// all.
#pragma once

#include "scanlib/base/file_naming.h"
#include "scanlib/base/output_store.h"
#include "scanlib/session/job_journal.h"
#include "scanlib/session/job_settings.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orva {

/// What a job had come to before it died, for the files that are made of its pages afterwards.
struct Resumption
{
    unsigned long long files = 0; ///< that exist already; their serials are not given again
    std::map<std::string, std::string> names; ///< of documents that were begun, by stream
};

/// One thread.
class DocumentAssembler
{
public:
    /// Told the full path of each file once it is complete on disk under its name.
    using FileSaved = std::function<void(const std::string& path)>;

    /// For a running job.
    DocumentAssembler(const OutputSettings& output, const OutputFormat& format, JobJournal& journal,
        FileSaved onSaved);
    /// For one that died: each file gets the name that it would have had, with a mark behind it. A
    /// time stamp is that of the scan.
    DocumentAssembler(const OutputSettings& output, const OutputFormat& format, JobJournal& journal,
        FileSaved onSaved, Resumption resumed);

    /// The next page, in page order, its payload spooled. After a failure the pages that are in no
    /// finished file stay in the journal's folder; a further page begins a new file. A page of a
    /// format of text that was not read becomes a JPEG file: in place of its own file, or beside
    /// the document (NAME_第N页.jpg), where its page stays empty.
    Status add(EncodedPage page);
    /// Completes what is open. A document that cannot take its last page is made once more without
    /// it; one of which no page was read is not made.
    Status finish();

private:
    struct OpenDocument
    {
        Reservation place;
        std::unique_ptr<DocumentWriter> writer;
        std::vector<EncodedPage> pages;
    };

    bool isUnread(const EncodedPage& page) const;
    Status reserveNext(
        OpenDocument& document, const EncodedPage& page, const std::string& extension);
    Status reserveResumed(
        OpenDocument& document, const EncodedPage& page, const std::string& extension);
    Status begin(OpenDocument& document);
    Status begin(OpenDocument& document, std::unique_ptr<DocumentWriter> writer);
    Status addAsFile(EncodedPage page);
    Status addToDocument(EncodedPage page);
    Status addPictureBeside(const OpenDocument& document, const EncodedPage& page);
    Status complete(OpenDocument& document);
    Status rebuild(OpenDocument& document);

    const OutputSettings m_output;
    const OutputFormat& m_format;
    JobJournal& m_journal;
    const FileSaved m_onSaved;
    OutputStore m_store;
    std::optional<Resumption> m_resumed;
    std::chrono::system_clock::time_point m_scanTime; ///< of the page being added, when resumed
    NameSequence m_names;
    std::string m_extension;
    std::map<std::string, OpenDocument> m_open; ///< by stream tag
};

} // namespace orva
