// Everything that one job is made of, frozen when it starts.
#pragma once

#include "scanlib/base/file_naming.h"
#include "scanlib/base/output_store.h"
#include "scanlib/device/device.h"
#include "scanlib/page/image_settings.h"
#include "scanlib/writers/writer.h"

#include <chrono>
#include <cstddef>
#include <filesystem>

namespace orva {

/// Where the files of a job go and what they are called.
struct OutputSettings
{
    std::filesystem::path folder;
    NamingRule naming;
    SameName sameName = SameName::kAddNumber;
    FileFormat format = FileFormat::kJpg;
    bool multiPage = false; ///< only where the format holds several pages
};

struct JobSettings
{
    AcquireSettings acquire;
    ImageSettings image;
    OutputSettings output;
    EncodeOptions encode;
};

/// How much of the machine a job may use.
struct PipelineLimits
{
    unsigned workers = 0; ///< threads for image work; 0 takes one a processor core
    /// Sides that wait for a worker. Deeper queues take memory and page faults, not time away.
    std::size_t queueBytes = std::size_t { 96 } << 20U;
    /// For the recognition of one page; one full of small print takes some ten seconds on a slow
    /// machine.
    std::chrono::milliseconds readingLimit { 120'000 };
};

} // namespace orva
