// What independent programs say about the files that the writers make.
#pragma once

#include "tests/scanlib/page/drawn_pages.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace orva {

/// A folder that goes away with the test.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "writers-XXXXXX").string();
        m_path = ::mkdtemp(name.data()) != nullptr ? name : std::string {};
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::filesystem::path file(const std::string& name) const { return m_path / name; }

private:
    std::filesystem::path m_path;
};

/// Standard output of a command; the test fails when the command does (it must be installed).
inline std::string outputOf(const std::string& command)
{
    std::string output;
    std::FILE* const pipe = ::popen((command + " 2>&1").c_str(), "re");
    if (pipe == nullptr) {
        ADD_FAILURE() << "cannot run " << command;
        return output;
    }
    char buffer[65536];
    std::size_t got = 0;
    while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) {
        output.append(buffer, got);
    }
    const int status = ::pclose(pipe);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << command << "\n"
                                                               << output.substr(0, 2000);
    return output;
}

inline std::string quoted(const std::filesystem::path& path, const std::string& suffix = {})
{
    return "'" + path.string() + suffix + "'";
}

/// The picture as ImageMagick reads it: three bytes a pixel.
inline std::string pixelsSeenIn(const std::filesystem::path& path, const std::string& frame = {})
{
    return outputOf(
        "convert " + quoted(path, frame) + " -colorspace sRGB -type TrueColor -depth 8 rgb:-");
}

inline std::string pixelsOf(const Page& page)
{
    std::string pixels;
    pixels.reserve(
        static_cast<std::size_t>(page.width) * static_cast<std::size_t>(page.height) * 3);
    for (int y = 0; y < page.height; ++y) {
        for (int x = 0; x < page.width; ++x) {
            const Color color = pixel(page, x, y);
            pixels += static_cast<char>(color.red);
            pixels += static_cast<char>(color.green);
            pixels += static_cast<char>(color.blue);
        }
    }
    return pixels;
}

inline double meanDifference(const std::string& a, const std::string& b)
{
    if (a.size() != b.size() || a.empty()) {
        return 255;
    }
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        sum += std::abs(static_cast<int>(static_cast<unsigned char>(a[i]))
            - static_cast<int>(static_cast<unsigned char>(b[i])));
    }
    return sum / static_cast<double>(a.size());
}

} // namespace orva
