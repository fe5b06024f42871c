// Lays a tilted page straight for the recognition, and its words back where they stand on the page.
// Tesseract finds the lines of a page that is tilted by a few degrees; from about five on it loses
// them, and with them the text. The page itself is not touched.
#pragma once

#include "scanlib/base/page_text.h"
#include "scanlib/ocr/gray_picture.h"

namespace orva {

/// One turn of a picture about its middle. The straight picture is as large as the turned one
/// needs; what lies outside of the tilted one is white.
class Straightening
{
public:
    /// `degrees`: how far lines run downhill, -45..45.
    Straightening(int width, int height, double degrees);

    /// Linear between four pixels. `out` is another picture than `tilted`.
    void straighten(const GrayPicture& tilted, GrayPicture& out) const;
    /// From places in the straight picture to places in the tilted one: the middles of words and
    /// lines exactly, their boxes as wide and high as the upright parts of the tilted ones.
    void tiltBack(PageText& text) const;

private:
    struct Point
    {
        double x = 0;
        double y = 0;
    };
    Point tilted(double x, double y) const;
    TextBox tilted(const TextBox& box) const;

    int m_width;
    int m_height;
    double m_cos;
    double m_sin;
    int m_straightWidth;
    int m_straightHeight;
};

} // namespace orva
