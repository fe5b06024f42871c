// Makes output files of the pages of a job: one file a page, or one document (one a stream) for
// all.
#pragma once

#include "scanlib/base/file_naming.h"
#include "scanlib/base/output_store.h"
#include "scanlib/session/job_journal.h"
#include "scanlib/session/job_settings.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orva {

/// One thread.
class DocumentAssembler
{
public:
    /// Told the full path of each file once it is complete on disk under its name.
    using FileSaved = std::function<void(const std::string& path)>;

    /// `filesBefore`: files of the same job that exist already; their serials are not given again.
    DocumentAssembler(const OutputSettings& output, const OutputFormat& format, JobJournal& journal,
        FileSaved onSaved, unsigned long long filesBefore = 0);

    /// The next page, in page order, its payload spooled. After a failure the pages that are in no
    /// finished file stay in the journal's folder; a further page begins a new file.
    Status add(EncodedPage page);
    /// Completes what is open. A document that cannot take its last page is made once more without
    /// it.
    Status finish();

private:
    struct OpenDocument
    {
        Reservation place;
        std::unique_ptr<DocumentWriter> writer;
        std::vector<EncodedPage> pages;
    };

    Status reserveNext(OpenDocument& document, const std::string& stream);
    Status begin(OpenDocument& document);
    Status addAsFile(EncodedPage page);
    Status addToDocument(EncodedPage page);
    Status complete(OpenDocument& document);
    Status rebuild(OpenDocument& document);

    const OutputSettings m_output;
    const OutputFormat& m_format;
    JobJournal& m_journal;
    const FileSaved m_onSaved;
    OutputStore m_store;
    NameSequence m_names;
    std::string m_extension;
    std::map<std::string, OpenDocument> m_open; ///< by stream tag
};

} // namespace orva
