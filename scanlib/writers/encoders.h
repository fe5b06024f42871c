// The encoders and writers, for the table in formats.cpp and for tests.
#pragma once

#include "scanlib/writers/writer.h"

#include <memory>

namespace orva {

/// JPEG: JFIF with the resolution in dots per inch. Grey and black-and-white pages have one
/// component. Colour keeps its full resolution from quality 90 on; below, one colour value serves
/// 2 x 2 pixels, which nearly halves the file and leaves print readable. kPageTooLarge above
/// 65,500 pixels.
std::unique_ptr<PageEncoder> makeJpegEncoder();
/// The same picture in progressive order with tables of its own: a sixth smaller, several times the
/// work. For pages whose recognition takes far longer than that.
std::unique_ptr<PageEncoder> makeSmallJpegEncoder();
/// BMP: 24 bits, 8 bits with a grey palette, 1 bit with white and black. kPageTooLarge from 4 GiB.
std::unique_ptr<PageEncoder> makeBmpEncoder();
/// PNG: 8-bit RGB, 8-bit grey, 1-bit grey.
std::unique_ptr<PageEncoder> makePngEncoder();
/// One-page TIFF: CCITT group 4, else Deflate with horizontal differences. kPageTooLarge from 4
/// GiB.
std::unique_ptr<PageEncoder> makeTiffEncoder();
/// Bare CCITT group 4 data of a black-and-white page: one strip, most significant bit first, ends
/// with EOFB.
std::unique_ptr<PageEncoder> makeFaxEncoder();
/// Bare CCITT group 4 data for black-and-white, JPEG for the others.
std::unique_ptr<PageEncoder> makePdfEncoder();
/// The same with the small form of JPEG (ISO 32000-1, 7.4.8: progressive from PDF 1.3 on).
std::unique_ptr<PageEncoder> makePdfTextEncoder();
/// JPEG, and PNG for black-and-white.
std::unique_ptr<PageEncoder> makeOfdEncoder();

/// For formats of one page: the payload is the file; JPEG and PNG get their metadata put in.
std::unique_ptr<DocumentWriter> makeSinglePageWriter();
/// A file that would outgrow the 32-bit offsets of TIFF 6.0 goes on as BigTIFF; the limit can be
/// lowered for tests.
std::unique_ptr<DocumentWriter> makeTiffWriter(std::uint64_t classicLimitBytes);
/// Reads the payload files in finish(): they must last until then.
std::unique_ptr<DocumentWriter> makePdfWriter();
/// With an invisible text layer over the picture, from the pages' recognised text.
std::unique_ptr<DocumentWriter> makePdfTextWriter();
/// Each page goes into the file as it comes; what binds them together in finish().
std::unique_ptr<DocumentWriter> makeOfdWriter();
/// With invisible text under the picture.
std::unique_ptr<DocumentWriter> makeOfdTextWriter();
/// Formats of recognised text. All of a workbook is put together in finish().
std::unique_ptr<DocumentWriter> makeTxtWriter();
std::unique_ptr<DocumentWriter> makeRtfWriter();
std::unique_ptr<DocumentWriter> makeXlsWriter();

/// What all encoders have in common: geometry and identity of the page, and a missing block of
/// memory that comes out as kNoMemory instead of flying on.
class PageEncoderBase : public PageEncoder
{
public:
    Status encode(const Page& page, const EncodeOptions& options, EncodedPage& out) const final;

protected:
    /// Fills `out` from empty.
    virtual Status encodeBytes(
        const Page& page, const EncodeOptions& options, std::vector<std::uint8_t>& out) const = 0;
};

} // namespace orva
