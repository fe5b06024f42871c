// OFD (GB/T 33190-2016) of one or many page images. Paths in the container are case-sensitive and
// relative to the file that names them; lengths are millimetres from the top left; IDs are unique
// over the document. The order of elements is the one of the standard's schemas.
#include "scanlib/base/local_time.h"
#include "scanlib/base/units.h"
#include "scanlib/writers/encoders.h"
#include "scanlib/writers/ofd_text_layer.h"
#include "scanlib/writers/xml_text.h"
#include "scanlib/writers/zip_file.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <random>

namespace orva {

namespace {

constexpr const char* kXmlHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
constexpr const char* kNamespace = " xmlns:ofd=\"http://www.ofdspec.org/2016\"";
// Every page takes these IDs: the page, its layer, its image object, the image itself; then one for
// each of its lines of text.
constexpr int kIdsPerPage = 4;

std::string millimetres(int pixels, double dpi)
{
    char text[32] = "";
    std::snprintf(text, sizeof text, "%.3f",
        pixels * units::kMillimetresPerInch / (dpi > 0 ? dpi : units::kAssumedDpi));
    std::string result = text;
    for (char& c : result) {
        c = c == ',' ? '.' : c; // the host may run under any locale
    }
    return result;
}

std::string documentId()
{
    std::random_device random;
    std::string id;
    for (int i = 0; i < 4; ++i) {
        char text[9] = "";
        std::snprintf(text, sizeof text, "%08x", static_cast<unsigned>(random()));
        id += text;
    }
    return id;
}

std::string plainDate(std::int64_t unixSeconds)
{
    const std::tm parts = localTime(unixSeconds);
    char text[16] = "";
    std::strftime(text, sizeof text, "%Y-%m-%d", &parts);
    return text;
}

class OfdWriter : public DocumentWriter
{
public:
    explicit OfdWriter(bool withText)
        : m_withText(withText)
    {
        m_lastId = withText ? kFontId : 0;
    }

    Status begin(const std::filesystem::path& path, const DocumentInfo& info) override
    {
        m_info = info;
        return m_zip.open(path, info.createdUnixSeconds);
    }

    Status addPage(const EncodedPage& page) override
    {
        const std::string number = std::to_string(m_pages);
        PageText text;
        if (m_withText) {
            if (Status status = readText(page, text); !status.ok()) {
                return status;
            }
        }
        const int firstId = m_lastId + 1;
        m_lastId += kIdsPerPage;
        const auto id = [firstId](int offset) {
            return " ID=\"" + std::to_string(firstId + offset) + "\"";
        };
        const bool bits = page.format == PixelFormat::kBlackWhite;
        const std::string image = "image_" + number + (bits ? ".png" : ".jpg");
        const std::string width = millimetres(page.width, page.dpiX);
        const std::string height = millimetres(page.height, page.dpiY);
        const std::string box = "0 0 " + width + " " + height;
        std::string content = kXmlHead;
        content += std::string("<ofd:Page") + kNamespace + "><ofd:Area><ofd:PhysicalBox>" + box
            + "</ofd:PhysicalBox></ofd:Area><ofd:Content><ofd:Layer" + id(1) + " Type=\"Body\">"
            + ofdTextObjects(text, page, m_lastId) + "<ofd:ImageObject" + id(2) + " Boundary=\""
            + box + "\" CTM=\"" + width + " 0 0 " + height + " 0 0\" ResourceID=\""
            + std::to_string(firstId + 3) + "\"/></ofd:Layer></ofd:Content></ofd:Page>\n";
        Status status = m_zip.addPayload("Doc_0/Res/" + image, page);
        if (status.ok()) {
            status = m_zip.addText("Doc_0/Pages/Page_" + number + "/Content.xml", content);
        }
        if (!status.ok()) {
            return status;
        }
        m_pageList += "<ofd:Page" + id(0) + " BaseLoc=\"Pages/Page_" + number + "/Content.xml\"/>";
        m_imageList += "<ofd:MultiMedia" + id(3) + " Type=\"Image\" Format=\""
            + (bits ? "PNG" : "JPEG") + "\"><ofd:MediaFile>" + image
            + "</ofd:MediaFile></ofd:MultiMedia>";
        if (m_pages == 0) {
            m_firstBox = box;
        }
        ++m_pages;
        return {};
    }

    Status finish() override
    {
        if (m_pages == 0) {
            return { kInternal, "file without a page" };
        }
        if (m_withText) {
            const std::string fonts = std::string(kXmlHead) + "<ofd:Res" + kNamespace
                + " BaseLoc=\"Res\"><ofd:Fonts><ofd:Font ID=\"" + std::to_string(kFontId)
                + "\" FontName=\"宋体\" FamilyName=\"宋体\"/></ofd:Fonts></ofd:Res>\n";
            if (Status status = m_zip.addText("Doc_0/PublicRes.xml", fonts); !status.ok()) {
                return status;
            }
        }
        const std::array<std::pair<const char*, std::string>, 3> parts { {
            { "Doc_0/DocumentRes.xml",
                std::string("<ofd:Res") + kNamespace + " BaseLoc=\"Res\"><ofd:MultiMedias>"
                    + m_imageList + "</ofd:MultiMedias></ofd:Res>\n" },
            { "Doc_0/Document.xml",
                std::string("<ofd:Document") + kNamespace + "><ofd:CommonData><ofd:MaxUnitID>"
                    + std::to_string(m_lastId) + "</ofd:MaxUnitID><ofd:PageArea><ofd:PhysicalBox>"
                    + m_firstBox + "</ofd:PhysicalBox></ofd:PageArea>"
                    + (m_withText ? "<ofd:PublicRes>PublicRes.xml</ofd:PublicRes>" : "")
                    + "<ofd:DocumentRes>DocumentRes.xml</"
                      "ofd:DocumentRes>"
                      "</ofd:CommonData><ofd:Pages>"
                    + m_pageList + "</ofd:Pages></ofd:Document>\n" },
            { "OFD.xml",
                std::string("<ofd:OFD") + kNamespace
                    + " Version=\"1.0\" DocType=\"OFD\"><ofd:DocBody><ofd:DocInfo><ofd:DocID>"
                    + documentId() + "</ofd:DocID><ofd:Title>" + xmlEscaped(m_info.title)
                    + "</ofd:Title><ofd:CreationDate>" + plainDate(m_info.createdUnixSeconds)
                    + "</ofd:CreationDate><ofd:Creator>" + xmlEscaped(m_info.producer)
                    + "</ofd:Creator></ofd:DocInfo><ofd:DocRoot>Doc_0/Document.xml</ofd:DocRoot></"
                      "ofd:DocBody>"
                      "</ofd:OFD>\n" },
        } };
        for (const auto& [name, xml] : parts) {
            if (Status status = m_zip.addText(name, kXmlHead + xml); !status.ok()) {
                return status;
            }
        }
        return m_zip.finish();
    }

private:
    const bool m_withText;
    int m_lastId = 0;
    DocumentInfo m_info;
    ZipFile m_zip;
    std::string m_pageList;
    std::string m_imageList;
    std::string m_firstBox;
    int m_pages = 0;
};

class OfdEncoder : public PageEncoder
{
public:
    Status encode(const Page& page, const EncodeOptions& options, EncodedPage& out) const override
    {
        const auto encoder =
            page.format == PixelFormat::kBlackWhite ? makePngEncoder() : makeJpegEncoder();
        return encoder->encode(page, options, out);
    }
};

} // namespace

std::unique_ptr<PageEncoder> makeOfdEncoder()
{
    return std::make_unique<OfdEncoder>();
}
std::unique_ptr<DocumentWriter> makeOfdWriter()
{
    return std::make_unique<OfdWriter>(false);
}
std::unique_ptr<DocumentWriter> makeOfdTextWriter()
{
    return std::make_unique<OfdWriter>(true);
}

} // namespace orva
