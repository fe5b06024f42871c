// Pages through encoder and writer, as the session takes them.
#pragma once

#include "scanlib/writers/encoders.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace orva {

inline EncodedPage encoded(FileFormat format, const Page& page, int quality = 100)
{
    EncodedPage out;
    EncodeOptions options;
    options.jpegQuality = quality;
    const Status status = findOutputFormat(format)->makeEncoder()->encode(page, options, out);
    EXPECT_TRUE(status.ok()) << status.detail();
    return out;
}

/// Title "扫描 & <1>", created on 2023-11-14 at 22:13:20 UTC.
inline Status writeFile(
    FileFormat format, const std::filesystem::path& path, const std::vector<EncodedPage>& pages)
{
    DocumentInfo info;
    info.title = "扫描 & <1>";
    info.createdUnixSeconds = 1700000000;
    const auto writer = findOutputFormat(format)->makeWriter();
    Status status = writer->begin(path, info);
    for (std::size_t i = 0; status.ok() && i < pages.size(); ++i) {
        status = writer->addPage(pages[i]);
    }
    return status.ok() ? writer->finish() : status;
}

/// Moves the payload to a file, as the spool does.
inline EncodedPage spooled(EncodedPage page, const std::filesystem::path& file)
{
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(page.bytes.data()),
            static_cast<std::streamsize>(page.bytes.size()));
    page.bytes.clear();
    page.file = file;
    return page;
}

inline std::string contentOf(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return { std::istreambuf_iterator<char>(file), {} };
}

} // namespace orva
