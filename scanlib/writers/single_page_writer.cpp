// Formats of one page: what the encoder made is the file, with what it says of itself put in.
#include "scanlib/writers/encoders.h"
#include "scanlib/writers/metadata.h"
#include "scanlib/writers/output_file.h"

#include <string>

namespace orva {

namespace {

constexpr std::size_t kHeadBytes = 64; // the headers of JPEG and PNG end before

class SinglePageWriter : public DocumentWriter
{
public:
    Status begin(const std::filesystem::path& path, const DocumentInfo& info) override
    {
        m_info = info;
        return m_file.open(path);
    }

    Status addPage(const EncodedPage& page) override
    {
        if (m_hasPage) {
            return { kInternal, "this format holds one page" };
        }
        m_hasPage = true;
        std::vector<std::uint8_t> head;
        if (Status status = readPayload(page, head, kHeadBytes); !status.ok()) {
            return status;
        }
        const Splice facts = pictureMetadata(head, m_info);
        if (facts.at > head.size()) {
            return { kFileWrite, "damaged page" };
        }
        const std::string front(head.begin(), head.begin() + static_cast<std::ptrdiff_t>(facts.at));
        if (Status status =
                m_file.write((front + facts.bytes).data(), facts.at + facts.bytes.size());
            !status.ok()) {
            return status;
        }
        return appendPayload(page, m_file, facts.at);
    }

    Status finish() override
    {
        return m_hasPage ? m_file.finish() : Status { kInternal, "file without a page" };
    }

private:
    DocumentInfo m_info;
    OutputFile m_file;
    bool m_hasPage = false;
};

} // namespace

std::unique_ptr<DocumentWriter> makeSinglePageWriter()
{
    return std::make_unique<SinglePageWriter>();
}

} // namespace orva
