// Formats that hold the recognised text only: of the page itself nothing but its size is kept.
#include "scanlib/writers/encoders.h"

namespace orva {

namespace {

class TextEncoder : public PageEncoderBase
{
protected:
    Status encodeBytes(const Page& /*page*/, const EncodeOptions& /*options*/,
        std::vector<std::uint8_t>& /*out*/) const override
    {
        return {};
    }
};

} // namespace

std::unique_ptr<PageEncoder> makeTextEncoder()
{
    return std::make_unique<TextEncoder>();
}

} // namespace orva
