#include "scanlib/session/output_settings.h"

#include "scanlib/base/text.h"

namespace orva {

Status outputSettingsFrom(const FileParam& param, const PageTools& tools, OutputSettings& output)
{
    if (!isTerminated(param.szFilePath, sizeof(param.szFilePath))
        || !isTerminated(param.szFileName, sizeof(param.szFileName))
        || !isTerminated(param.szSeparator, sizeof(param.szSeparator))
        || !isTerminated(param.szIndex, sizeof(param.szIndex))) {
        return { kBadFileName, "a text has no terminator" };
    }
    OutputSettings result;
    result.folder = param.szFilePath;
    if (!result.folder.is_absolute()) {
        return { kBadFileName, "the output folder is not an absolute path" };
    }
    result.naming.prefix = param.szFileName;
    result.naming.separator = param.szSeparator;
    result.naming.timeNamed = param.bTimeNamed != 0;
    result.naming.order = param.nTimeNamedType == 1 ? DateOrder::kMonthDayYear
        : param.nTimeNamedType == 2                 ? DateOrder::kDayMonthYear
                                                    : DateOrder::kYearMonthDay;
    result.naming.serialStart = param.szIndex;
    if (Status status = checkNamingRule(result.naming); !status.ok()) {
        return status;
    }
    result.sameName = param.bSameNameCover != 0 ? SameName::kReplace : SameName::kAddNumber;
    result.format = static_cast<FileFormat>(param.nFormatIndex);
    const OutputFormat* const format = tools.findOutputFormat(result.format);
    if (format == nullptr) {
        return { kFormatNotSupported, "format " + std::to_string(param.nFormatIndex) };
    }
    result.multiPage = param.nMultiPage != 0 && format->holdsPages;
    output = std::move(result);
    return {};
}

} // namespace orva
