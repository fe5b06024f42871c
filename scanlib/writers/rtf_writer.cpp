// RTF 1.9: a section a page of the size of the scanned one. 7-bit: all other characters are written
// as \uN with a question mark for readers that do not know it.
#include "scanlib/base/local_time.h"
#include "scanlib/writers/encoders.h"
#include "scanlib/writers/output_file.h"
#include "scanlib/writers/rtf_page.h"

#include <ctime>

namespace orva {

namespace {

std::string header(const DocumentInfo& info)
{
    const std::tm parts = localTime(info.createdUnixSeconds);
    // Code page and character set 134 are those of Simplified Chinese.
    return "{\\rtf1\\ansi\\ansicpg936\\uc1\\deff0\\deflang1033\\deflangfe2052\n"
           "{\\fonttbl{\\f0\\froman\\fcharset0 Times New Roman;}"
           "{\\f1\\fnil\\fcharset134 SimSun{\\*\\falt Noto Serif CJK SC};}}\n"
           "{\\info{\\title "
        + rtfText(info.title) + "}{\\creatim" + rtfControl("yr", parts.tm_year + 1900)
        + rtfControl("mo", parts.tm_mon + 1) + rtfControl("dy", parts.tm_mday)
        + rtfControl("hr", parts.tm_hour) + rtfControl("min", parts.tm_min)
        + rtfControl("sec", parts.tm_sec) + "}{\\doccomm " + rtfText(info.producer)
        + "}}\n{\\*\\generator " + rtfText(info.producer) + ";}\n\\nowidctlpar\n";
}

class RtfWriter : public DocumentWriter
{
public:
    Status begin(const std::filesystem::path& path, const DocumentInfo& info) override
    {
        if (Status status = m_file.open(path); !status.ok()) {
            return status;
        }
        return put(header(info));
    }

    Status addPage(const EncodedPage& page) override
    {
        PageText text;
        if (Status status = readText(page, text); !status.ok()) {
            return status;
        }
        const std::string all = (m_pages > 0 ? "\\sect" : "") + rtfPage(page, text);
        ++m_pages;
        return put(all);
    }

    Status finish() override
    {
        if (m_pages == 0) {
            return { kInternal, "file without a page" };
        }
        const Status status = put("}\n");
        return status.ok() ? m_file.finish() : status;
    }

private:
    Status put(const std::string& text) { return m_file.write(text.data(), text.size()); }

    OutputFile m_file;
    int m_pages = 0;
};

} // namespace

std::unique_ptr<DocumentWriter> makeRtfWriter()
{
    return std::make_unique<RtfWriter>();
}

} // namespace orva
