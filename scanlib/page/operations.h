// The operations on pages, in their one order. Each lives in a file of its own under ops/.
#pragma once

#include "scanlib/page/image_settings.h"

#include <vector>

namespace orva {

/// Sides that must be seen together: one side, or both sides of a sheet when they are merged.
using PageGroup = std::vector<Page>;

/// Page::stream of the three files that a side gives with several streams.
inline constexpr std::string_view kColorStream = kStreamTags[0];
inline constexpr std::string_view kGrayStream = kStreamTags[1];
inline constexpr std::string_view kBlackWhiteStream = kStreamTags[2];

/// true when the settings need both sides of a sheet in one group.
bool needsWholeSheet(const ImageSettings& settings);

/// Runs every operation that the settings ask for, in the order of the table in operations.cpp. The
/// result may hold fewer pages (blank ones dropped, sides merged) or more (split, several streams);
/// each keeps sheet, side and number of the side it comes from. Any thread; groups are independent.
/// Fails with kNoMemory, kPageTooLarge or kDamagedPage; the group is then unspecified.
Status runOperations(PageGroup& group, const ImageSettings& settings);

} // namespace orva
