// Plain text: UTF-8 in reading order. Lines end with LF and no byte order mark stands in front:
// every program of the platform reads that as it is, files can be joined and compared, and the
// editors of other systems have understood it for years. A blank line stands between two
// paragraphs; a form feed on a line of its own between two pages, since a blank line could not be
// told from the end of a paragraph and a quoted page must be found again.
#include "scanlib/writers/encoders.h"
#include "scanlib/writers/flow_text.h"
#include "scanlib/writers/output_file.h"

namespace orva {

namespace {

std::string textOfPage(const PageText& page)
{
    std::string text;
    for (const Paragraph& paragraph : page.paragraphs) {
        const std::vector<std::string> lines = typedLines(paragraph);
        if (!text.empty() && !lines.empty()) {
            text += '\n';
        }
        for (const std::string& line : lines) {
            text += line + '\n';
        }
    }
    return text;
}

class TxtWriter : public DocumentWriter
{
public:
    Status begin(const std::filesystem::path& path, const DocumentInfo& /*info*/) override
    {
        return m_file.open(path);
    }

    Status addPage(const EncodedPage& page) override
    {
        PageText recognised;
        if (Status status = readText(page, recognised); !status.ok()) {
            return status;
        }
        const std::string text = (m_pages > 0 ? "\f\n" : "") + textOfPage(recognised);
        ++m_pages;
        return m_file.write(text.data(), text.size());
    }

    Status finish() override
    {
        return m_pages > 0 ? m_file.finish() : Status { kInternal, "file without a page" };
    }

private:
    OutputFile m_file;
    int m_pages = 0;
};

} // namespace

std::unique_ptr<DocumentWriter> makeTxtWriter()
{
    return std::make_unique<TxtWriter>();
}

} // namespace orva
