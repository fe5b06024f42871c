// What the fuzz targets share: files for readers that want a path, and a check that counts as a
// crash. Targets are files of their own so that each can have its corpus and its dictionary.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

/// One input; called by the fuzzer, or by replay_main.cpp for the kept inputs.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

inline void require(bool condition, const char* what)
{
    if (!condition) {
        std::cerr << "does not hold: " << what << '\n';
        std::abort();
    }
}

/// A folder of this process; goes with it.
class ScratchFolder
{
public:
    ScratchFolder()
        : m_path(std::filesystem::temp_directory_path() / "fuzz-XXXXXX")
    {
        if (::mkdtemp(m_path.data()) == nullptr) {
            throw std::runtime_error("no folder " + m_path);
        }
    }
    ~ScratchFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] std::string file(const std::string& name) const { return m_path + '/' + name; }

private:
    std::string m_path;
};

/// QSettings takes a file for unchanged that has the same name, length and millisecond as one that
/// it has seen: each input gets a time of its own, and files written beside it come back to the
/// same name only after this many inputs.
inline constexpr std::size_t kFileNames = 64;

inline void writeInput(const std::string& file, const std::uint8_t* data, std::size_t size)
{
    static auto time = std::filesystem::file_time_type::clock::now();
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    out.close();
    require(out.good(), "the input file can be written");
    std::filesystem::last_write_time(file, time -= std::chrono::seconds(1));
}
