// Spreadsheet of the recognised text: a sheet a page, tables in rows and columns. The texts are
// shared over the workbook, so that it is put together in memory; a page takes a few kilobytes.
#include "scanlib/base/units.h"
#include "scanlib/writers/biff_workbook.h"
#include "scanlib/writers/encoders.h"
#include "scanlib/writers/ole_container.h"
#include "scanlib/writers/output_file.h"
#include "scanlib/writers/page_rulings.h"
#include "scanlib/writers/text_rows.h"

#include <new>

namespace orva {

namespace {

SheetPaper paperOf(const EncodedPage& page)
{
    const auto millimetres = [](int pixels, double dpi) {
        return pixels * units::kMillimetresPerInch / (dpi > 0 ? dpi : units::kAssumedDpi);
    };
    return { millimetres(page.width, page.dpiX), millimetres(page.height, page.dpiY) };
}

class XlsWriter : public DocumentWriter
{
public:
    Status begin(const std::filesystem::path& path, const DocumentInfo& info) override
    {
        m_info = info;
        return m_file.open(path);
    }

    Status addPage(const EncodedPage& page) override
    {
        return guarded([&]() -> Status {
            PageText text;
            if (Status status = readText(page, text); !status.ok()) {
                return status;
            }
            const Rulings rulings = findRulings(page, textSlope(text));
            m_workbook.addPage(findTables(text, rulings, page.dpiX), page.dpiX, paperOf(page));
            return {};
        });
    }

    Status finish() override
    {
        if (m_workbook.sheets() == 0) {
            return { kInternal, "file without a page" };
        }
        return guarded([&]() -> Status {
            std::vector<std::uint8_t> file;
            if (Status status = oleFile(m_workbook.bytes(), m_info, file); !status.ok()) {
                return status;
            }
            const Status status = m_file.write(file.data(), file.size());
            return status.ok() ? m_file.finish() : status;
        });
    }

private:
    template <typename Work>
    static Status guarded(Work work)
    {
        try {
            return work();
        } catch (const std::bad_alloc&) {
            return { kNoMemory, "no memory for the workbook" };
        }
    }

    DocumentInfo m_info;
    OutputFile m_file;
    BiffWorkbook m_workbook;
};

} // namespace

std::unique_ptr<DocumentWriter> makeXlsWriter()
{
    return std::make_unique<XlsWriter>();
}

} // namespace orva
