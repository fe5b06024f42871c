// PDF of one or many page images through qpdf. JPEG and group 4 data go in as they are; they are
// read from the spool while the file is written, so memory does not grow with the pages.
#include "scanlib/base/units.h"
#include "scanlib/writers/encoders.h"
#include "scanlib/writers/metadata.h"
#include "scanlib/writers/output_file.h"
#include "scanlib/writers/pdf_text_layer.h"
#include "scanlib/writers/srgb_profile.h"

#include <qpdf/Buffer.hh>
#include <qpdf/Pipeline.hh>
#include <qpdf/Pl_Buffer.hh>
#include <qpdf/Pl_Flate.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFWriter.hh>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <new>

namespace orva {

namespace {

constexpr double kPointsPerInch = 72;
// ISO 19005-2, 6.1.13: a page is 3 to 14,400 units wide and high.
constexpr double kMinPageUnits = 3;
constexpr double kMaxPageUnits = 14400;
constexpr std::size_t kBufferBytes = std::size_t { 64 } * 1024;

/// The first thing that went wrong while qpdf wrote. Exceptions are no way out: qpdf finishes its
/// pipelines in destructors. After a failure everything that is still to come is let go.
class FirstFailure
{
public:
    void note(const Status& status)
    {
        if (m_status.ok()) {
            m_status = status;
        }
    }
    bool happened() const { return !m_status.ok(); }
    const Status& status() const { return m_status; }

private:
    Status m_status;
};

/// qpdf writes in small pieces; the file gets large ones.
class FilePipeline : public Pipeline
{
public:
    FilePipeline(OutputFile& file, FirstFailure& failure)
        : Pipeline("output file", nullptr)
        , m_file(file)
        , m_failure(failure)
    {
        m_buffer.reserve(kBufferBytes);
    }

    void write(const unsigned char* data, size_t size) override
    {
        if (m_buffer.size() + size > kBufferBytes) {
            flush();
        }
        if (size >= kBufferBytes) {
            put(data, size);
            return;
        }
        m_buffer.insert(m_buffer.end(), data, data + size);
    }

    void finish() override { flush(); }

private:
    void flush()
    {
        put(m_buffer.data(), m_buffer.size());
        m_buffer.clear();
    }
    void put(const unsigned char* data, std::size_t size)
    {
        if (!m_failure.happened()) {
            m_failure.note(m_file.write(data, size));
        }
    }

    OutputFile& m_file;
    FirstFailure& m_failure;
    std::vector<unsigned char> m_buffer;
};

/// The payload of one page, read when qpdf asks for it.
class PayloadProvider : public QPDFObjectHandle::StreamDataProvider
{
public:
    PayloadProvider(const EncodedPage& page, FirstFailure& failure)
        : m_bytes(page.file.empty() ? page.bytes : std::vector<std::uint8_t> {})
        , m_file(page.file)
        , m_failure(failure)
    {
    }

    void provideStreamData(const QPDFObjGen& /*object*/, Pipeline* pipeline) override
    {
        if (m_file.empty()) {
            pipeline->write(m_bytes.data(), m_bytes.size());
            pipeline->finish();
            return;
        }
        std::ifstream file(m_file, std::ios::binary);
        std::vector<char> buffer(kBufferBytes);
        while (file && !m_failure.happened()) {
            file.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
            const auto count = static_cast<std::size_t>(file.gcount());
            pipeline->write(reinterpret_cast<const unsigned char*>(buffer.data()), count);
        }
        if (!file.eof()) {
            m_failure.note({ kFileWrite, "cannot read " + m_file.string() });
        }
        pipeline->finish();
    }

private:
    std::vector<std::uint8_t> m_bytes;
    std::filesystem::path m_file;
    FirstFailure& m_failure;
};

QPDFObjectHandle name(const char* text)
{
    return QPDFObjectHandle::newName(text);
}

double pageUnits(int pixels, double dpi)
{
    return std::clamp(pixels * kPointsPerInch / (dpi > 0 ? dpi : units::kAssumedDpi), kMinPageUnits,
        kMaxPageUnits);
}

std::string decimal(double value)
{
    char text[32] = "";
    std::snprintf(text, sizeof text, "%.3f", value);
    std::replace(text, text + sizeof text, ',', '.'); // the host may run under any locale
    return text;
}

QPDFObjectHandle imageDictionary(const EncodedPage& page)
{
    QPDFObjectHandle image = QPDFObjectHandle::newDictionary();
    const bool bits = page.format == PixelFormat::kBlackWhite;
    image.replaceKey("/Type", name("/XObject"));
    image.replaceKey("/Subtype", name("/Image"));
    image.replaceKey("/Width", QPDFObjectHandle::newInteger(page.width));
    image.replaceKey("/Height", QPDFObjectHandle::newInteger(page.height));
    image.replaceKey("/BitsPerComponent", QPDFObjectHandle::newInteger(bits ? 1 : 8));
    image.replaceKey(
        "/ColorSpace", name(page.format == PixelFormat::kRgb ? "/DeviceRGB" : "/DeviceGray"));
    return image;
}

/// K below 0 is group 4. BlackIs1 is left at false: the decoder then gives 0 for ink, which is what
/// DeviceGray calls black.
QPDFObjectHandle faxParameters(const EncodedPage& page)
{
    QPDFObjectHandle parameters = QPDFObjectHandle::newDictionary();
    parameters.replaceKey("/K", QPDFObjectHandle::newInteger(-1));
    parameters.replaceKey("/Columns", QPDFObjectHandle::newInteger(page.width));
    parameters.replaceKey("/Rows", QPDFObjectHandle::newInteger(page.height));
    return parameters;
}

std::string deflated(const std::string& text)
{
    Pl_Buffer buffer("deflated");
    Pl_Flate flate("flate", &buffer, Pl_Flate::a_deflate);
    flate.write(reinterpret_cast<const unsigned char*>(text.data()), text.size());
    flate.finish();
    const std::unique_ptr<Buffer> bytes(buffer.getBuffer());
    return { reinterpret_cast<const char*>(bytes->getBuffer()), bytes->getSize() };
}

class PdfWriter : public DocumentWriter
{
public:
    explicit PdfWriter(bool withText)
        : m_withText(withText)
    {
    }

    Status begin(const std::filesystem::path& path, const DocumentInfo& info) override
    {
        return guarded([&]() -> Status {
            m_info = info;
            m_pdf.emptyPDF();
            m_pdf.setSuppressWarnings(true);
            return m_file.open(path);
        });
    }

    Status addPage(const EncodedPage& page) override
    {
        return guarded([&]() -> Status {
            QPDFObjectHandle image = QPDFObjectHandle::newStream(&m_pdf);
            image.replaceDict(imageDictionary(page));
            const bool bits = page.format == PixelFormat::kBlackWhite;
            image.replaceStreamData(std::make_shared<PayloadProvider>(page, m_failure),
                name(bits ? "/CCITTFaxDecode" : "/DCTDecode"),
                bits ? faxParameters(page) : QPDFObjectHandle::newNull());
            const std::string width = decimal(pageUnits(page.width, page.dpiX));
            const std::string height = decimal(pageUnits(page.height, page.dpiY));
            QPDFObjectHandle leaf = QPDFObjectHandle::parse(&m_pdf,
                "<< /Type /Page /MediaBox [0 0 " + width + " " + height
                    + "] /Resources << /XObject << >> >> >>");
            leaf.getKey("/Resources").getKey("/XObject").replaceKey("/Im0", image);
            if (Status status =
                    addContent(page, "q " + width + " 0 0 " + height + " 0 0 cm /Im0 Do Q\n", leaf);
                !status.ok()) {
                return status;
            }
            QPDFPageDocumentHelper(m_pdf).addPage(m_pdf.makeIndirectObject(leaf), false);
            ++m_pages;
            return {};
        });
    }

    Status finish() override
    {
        if (m_pages == 0) {
            return { kInternal, "file without a page" };
        }
        return guarded([&]() -> Status {
            m_layer.finish(m_pdf);
            describeDocument();
            FilePipeline pipeline(m_file, m_failure);
            QPDFWriter writer(m_pdf);
            writer.setOutputPipeline(&pipeline);
            writer.setStreamDataMode(qpdf_s_preserve);
            writer.setObjectStreamMode(qpdf_o_disable);
            writer.setNewlineBeforeEndstream(true); // asked for by PDF/A
            writer.setMinimumPDFVersion("1.7");
            writer.write();
            pipeline.finish();
            return m_failure.happened() ? m_failure.status() : m_file.finish();
        });
    }

private:
    template <typename Work>
    static Status guarded(Work work)
    {
        try {
            return work();
        } catch (const std::bad_alloc&) {
            return { kNoMemory, "no memory for the PDF" };
        } catch (const std::exception& error) {
            return { kFileWrite, std::string("PDF: ") + error.what() };
        }
    }

    /// The operators of a page; those of its text, if it is to have one, behind the picture's.
    Status addContent(const EncodedPage& page, std::string operators, QPDFObjectHandle& leaf)
    {
        QPDFObjectHandle stream = QPDFObjectHandle::newStream(&m_pdf);
        PageText text;
        if (m_withText) {
            if (Status status = readText(page, text); !status.ok()) {
                return status;
            }
        }
        const double width = pageUnits(page.width, page.dpiX);
        const double height = pageUnits(page.height, page.dpiY);
        const std::string layer =
            m_layer.content(text, height, width / page.width, height / page.height);
        if (layer.empty()) {
            stream.replaceStreamData(
                operators, QPDFObjectHandle::newNull(), QPDFObjectHandle::newNull());
        } else {
            stream.replaceStreamData(
                deflated(operators + layer), name("/FlateDecode"), QPDFObjectHandle::newNull());
            QPDFObjectHandle fonts = QPDFObjectHandle::newDictionary();
            fonts.replaceKey("/F0", m_layer.font(m_pdf));
            leaf.getKey("/Resources").replaceKey("/Font", fonts);
        }
        leaf.replaceKey("/Contents", stream);
        return {};
    }

    void describeDocument()
    {
        QPDFObjectHandle facts = QPDFObjectHandle::newDictionary();
        facts.replaceKey("/Title", QPDFObjectHandle::newUnicodeString(m_info.title));
        facts.replaceKey("/Producer", QPDFObjectHandle::newUnicodeString(m_info.producer));
        facts.replaceKey(
            "/CreationDate", QPDFObjectHandle::newString(pdfDate(m_info.createdUnixSeconds)));
        m_pdf.getTrailer().replaceKey("/Info", m_pdf.makeIndirectObject(facts));

        QPDFObjectHandle metadata =
            QPDFObjectHandle::newStream(&m_pdf, xmpPacket(m_info, PdfClaim::kPdfA2b));
        metadata.getDict().replaceKey("/Type", name("/Metadata"));
        metadata.getDict().replaceKey("/Subtype", name("/XML"));
        m_pdf.getRoot().replaceKey("/Metadata", metadata);

        QPDFObjectHandle profile = QPDFObjectHandle::newStream(&m_pdf, sRgbProfile());
        profile.getDict().replaceKey("/N", QPDFObjectHandle::newInteger(3));
        QPDFObjectHandle intent = QPDFObjectHandle::parse(
            "<< /Type /OutputIntent /S /GTS_PDFA1 /OutputConditionIdentifier (sRGB IEC61966-2.1)"
            " /Info (sRGB IEC61966-2.1) >>");
        intent.replaceKey("/DestOutputProfile", profile);
        QPDFObjectHandle intents = QPDFObjectHandle::newArray();
        intents.appendItem(intent);
        m_pdf.getRoot().replaceKey("/OutputIntents", intents);
    }

    const bool m_withText;
    DocumentInfo m_info;
    OutputFile m_file;
    FirstFailure m_failure;
    QPDF m_pdf;
    PdfTextLayer m_layer;
    int m_pages = 0;
};

class PdfEncoder : public PageEncoder
{
public:
    explicit PdfEncoder(std::unique_ptr<PageEncoder> forTones)
        : m_forTones(std::move(forTones))
    {
    }

    Status encode(const Page& page, const EncodeOptions& options, EncodedPage& out) const override
    {
        const bool bits = page.format == PixelFormat::kBlackWhite;
        return (bits ? *m_forBits : *m_forTones).encode(page, options, out);
    }

private:
    const std::unique_ptr<PageEncoder> m_forBits = makeFaxEncoder();
    const std::unique_ptr<PageEncoder> m_forTones;
};

} // namespace

std::unique_ptr<PageEncoder> makePdfEncoder()
{
    return std::make_unique<PdfEncoder>(makeJpegEncoder());
}
std::unique_ptr<PageEncoder> makePdfTextEncoder()
{
    return std::make_unique<PdfEncoder>(makeSmallJpegEncoder());
}
std::unique_ptr<DocumentWriter> makePdfWriter()
{
    return std::make_unique<PdfWriter>(false);
}
std::unique_ptr<DocumentWriter> makePdfTextWriter()
{
    return std::make_unique<PdfWriter>(true);
}

} // namespace orva
