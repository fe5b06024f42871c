// Formats of one page: what the encoder made is the file.
#include "scanlib/writers/encoders.h"
#include "scanlib/writers/output_file.h"

namespace orva {

namespace {

class SinglePageWriter : public DocumentWriter
{
public:
    Status begin(const std::filesystem::path& path, const DocumentInfo& /*info*/) override
    {
        return m_file.open(path);
    }

    Status addPage(const EncodedPage& page) override
    {
        if (m_hasPage) {
            return { kInternal, "this format holds one page" };
        }
        m_hasPage = true;
        return appendPayload(page, m_file);
    }

    Status finish() override
    {
        return m_hasPage ? m_file.finish() : Status { kInternal, "file without a page" };
    }

private:
    OutputFile m_file;
    bool m_hasPage = false;
};

} // namespace

std::unique_ptr<DocumentWriter> makeSinglePageWriter()
{
    return std::make_unique<SinglePageWriter>();
}

} // namespace orva
