// The invisible text of a page image in a PDF, and the one font that all pages share.
#pragma once

#include "scanlib/base/page_text.h"

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>

#include <map>
#include <set>
#include <string>

namespace orva {

/// Text in render mode 3 with a font without glyphs: it is never drawn, so nothing is embedded
/// (ISO 19005-2, 6.2.11.4.1 leaves such fonts out). Every letter is as wide as the font is high and
/// is scaled to its place. The codes are those of Unicode, two bytes each; letters beyond get the
/// codes that Unicode keeps free for surrogates.
class PdfTextLayer
{
public:
    /// Operators that write the text; the page is `height` units high and a pixel is
    /// `unitsPerPixelX` x `unitsPerPixelY`. Empty without text. The font is called /F0.
    std::string content(
        const PageText& text, double height, double unitsPerPixelX, double unitsPerPixelY);
    /// The font object, to be referred to by pages; what it means is filled in by finish().
    QPDFObjectHandle font(QPDF& pdf);
    /// Behind the last page.
    void finish(QPDF& pdf);

private:
    unsigned codeOf(char32_t letter);
    std::string unicodeMap() const;

    QPDFObjectHandle m_font;
    std::set<unsigned> m_rows; ///< high bytes of the codes in use
    std::map<char32_t, unsigned> m_beyond; ///< codes of letters above U+FFFF
};

} // namespace orva
