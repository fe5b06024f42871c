#include "scanlib/session/job_journal.h"

#include "scanlib/base/library_log.h"

#include <cjson/cJSON.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <set>
#include <utility>

namespace orva {

namespace {

struct JsonDeleter
{
    void operator()(cJSON* json) const { cJSON_Delete(json); }
};
using Json = std::unique_ptr<cJSON, JsonDeleter>;

Json line(const char* kind)
{
    Json json(cJSON_CreateObject());
    cJSON_AddStringToObject(json.get(), "kind", kind);
    return json;
}

std::string printed(const Json& json)
{
    const std::unique_ptr<char, decltype(&cJSON_free)> text(
        cJSON_PrintUnformatted(json.get()), &cJSON_free);
    return text ? text.get() : "";
}

std::string textOf(const Json& json, const char* key)
{
    const char* const text =
        cJSON_GetStringValue(cJSON_GetObjectItemCaseSensitive(json.get(), key));
    return text != nullptr ? text : "";
}

double numberOf(const Json& json, const char* key)
{
    const cJSON* const item = cJSON_GetObjectItemCaseSensitive(json.get(), key);
    return cJSON_IsNumber(item) ? item->valuedouble : 0;
}

int intOf(const Json& json, const char* key)
{
    return static_cast<int>(numberOf(json, key));
}

std::string outputLine(const OutputSettings& output)
{
    const Json json = line("output");
    cJSON_AddStringToObject(json.get(), "folder", output.folder.c_str());
    cJSON_AddStringToObject(json.get(), "prefix", output.naming.prefix.c_str());
    cJSON_AddStringToObject(json.get(), "separator", output.naming.separator.c_str());
    cJSON_AddNumberToObject(json.get(), "timeNamed", output.naming.timeNamed ? 1 : 0);
    cJSON_AddNumberToObject(json.get(), "order", static_cast<int>(output.naming.order));
    cJSON_AddStringToObject(json.get(), "serial", output.naming.serialStart.c_str());
    cJSON_AddNumberToObject(json.get(), "format", static_cast<int>(output.format));
    cJSON_AddNumberToObject(json.get(), "multiPage", output.multiPage ? 1 : 0);
    return printed(json);
}

OutputSettings outputOf(const Json& json)
{
    OutputSettings output;
    output.folder = textOf(json, "folder");
    output.naming.prefix = textOf(json, "prefix");
    output.naming.separator = textOf(json, "separator");
    output.naming.timeNamed = intOf(json, "timeNamed") != 0;
    output.naming.order = static_cast<DateOrder>(intOf(json, "order"));
    output.naming.serialStart = textOf(json, "serial");
    output.format = static_cast<FileFormat>(intOf(json, "format"));
    output.multiPage = intOf(json, "multiPage") != 0;
    return output;
}

std::string pageLine(const EncodedPage& page)
{
    const Json json = line("page");
    cJSON_AddStringToObject(json.get(), "file", page.file.filename().c_str());
    cJSON_AddNumberToObject(json.get(), "width", page.width);
    cJSON_AddNumberToObject(json.get(), "height", page.height);
    cJSON_AddNumberToObject(json.get(), "format", static_cast<int>(page.format));
    cJSON_AddNumberToObject(json.get(), "dpiX", page.dpiX);
    cJSON_AddNumberToObject(json.get(), "dpiY", page.dpiY);
    cJSON_AddNumberToObject(json.get(), "sheet", page.sheet);
    cJSON_AddNumberToObject(json.get(), "back", page.side == Side::kBack ? 1 : 0);
    cJSON_AddNumberToObject(json.get(), "number", page.number);
    cJSON_AddStringToObject(json.get(), "stream", page.stream.c_str());
    cJSON_AddNumberToObject(json.get(), "bytes", static_cast<double>(page.bytes.size()));
    return printed(json);
}

std::string textLine(const EncodedPage& page)
{
    const Json json = line("text");
    cJSON_AddStringToObject(json.get(), "page", page.file.filename().c_str());
    cJSON_AddStringToObject(json.get(), "file", page.textFile.filename().c_str());
    cJSON_AddNumberToObject(json.get(), "bytes", static_cast<double>(page.text.size()));
    return printed(json);
}

EncodedPage pageOf(const Json& json, const std::filesystem::path& folder)
{
    EncodedPage page;
    // Only the name counts, so that an edited journal cannot point elsewhere.
    page.file = folder / std::filesystem::path(textOf(json, "file")).filename();
    page.width = intOf(json, "width");
    page.height = intOf(json, "height");
    page.format = static_cast<PixelFormat>(intOf(json, "format"));
    page.dpiX = numberOf(json, "dpiX");
    page.dpiY = numberOf(json, "dpiY");
    page.sheet = intOf(json, "sheet");
    page.side = intOf(json, "back") != 0 ? Side::kBack : Side::kFront;
    page.number = intOf(json, "number");
    page.stream = textOf(json, "stream");
    return page;
}

/// After a loss of power a payload may be there by name only.
bool isWhole(const std::filesystem::path& file, double bytes)
{
    std::error_code error;
    return std::filesystem::is_regular_file(file, error)
        && static_cast<double>(std::filesystem::file_size(file, error)) == bytes;
}

/// A text that is not whole is left out; its page is worth keeping without.
void giveText(
    const Json& json, const std::filesystem::path& folder, std::vector<EncodedPage>& pages)
{
    const std::filesystem::path name = std::filesystem::path(textOf(json, "page")).filename();
    const std::filesystem::path text =
        folder / std::filesystem::path(textOf(json, "file")).filename();
    const auto page = std::find_if(pages.begin(), pages.end(),
        [&](const EncodedPage& candidate) { return candidate.file.filename() == name; });
    if (page != pages.end() && isWhole(text, numberOf(json, "bytes"))) {
        page->textFile = text;
    }
}

/// 0 when there is no such file. Only compared on one file system.
double inodeOf(const std::filesystem::path& file)
{
    struct stat info
    {
    };
    return stat(file.c_str(), &info) == 0 ? static_cast<double>(info.st_ino) : 0;
}

std::string commitLine(const std::filesystem::path& hidden, const std::filesystem::path& file,
    const std::vector<EncodedPage>& pages)
{
    const Json json = line("commit");
    cJSON_AddStringToObject(json.get(), "file", file.c_str());
    cJSON_AddNumberToObject(json.get(), "inode", inodeOf(hidden));
    cJSON* const names = cJSON_AddArrayToObject(json.get(), "pages");
    for (const EncodedPage& page : pages) {
        cJSON_AddItemToArray(names, cJSON_CreateString(page.file.filename().c_str()));
    }
    return printed(json);
}

/// One file that was about to get its name.
struct Commit
{
    std::vector<std::filesystem::path> payloads;
    bool seen = false; ///< the file is there, and it is that one
};

Commit commitOf(const Json& json, const std::filesystem::path& folder)
{
    Commit commit;
    const double inode = numberOf(json, "inode");
    commit.seen = inode != 0 && inodeOf(textOf(json, "file")) == inode;
    const cJSON* item = nullptr;
    cJSON_ArrayForEach(item, cJSON_GetObjectItemCaseSensitive(json.get(), "pages"))
    {
        if (const char* const name = cJSON_GetStringValue(item); name != nullptr) {
            commit.payloads.push_back(folder / std::filesystem::path(name).filename());
        }
    }
    return commit;
}

/// Payloads are deleted behind a commit; where they still are, only the file itself tells.
bool hasHappened(const Commit& commit)
{
    std::error_code error;
    return commit.seen
        || std::none_of(commit.payloads.begin(), commit.payloads.end(),
            [&](const auto& payload) { return std::filesystem::exists(payload, error); });
}

} // namespace

Status JobJournal::begin(const std::filesystem::path& spoolRoot, const OutputSettings& output)
{
    if (Status status = m_folder.create(spoolRoot); !status.ok()) {
        return status;
    }
    return m_folder.note(outputLine(output));
}

Status JobJournal::store(EncodedPage& page)
{
    int payload = 0;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        payload = ++m_payloads;
    }
    const std::string name = "page-" + std::to_string(page.number) + "-" + std::to_string(payload);
    if (Status status = m_folder.store(name, page.bytes, page.file); !status.ok()) {
        return status;
    }
    if (Status status = m_folder.note(pageLine(page)); !status.ok()) {
        return status;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_unsaved;
    return {};
}

void JobJournal::noteName(const std::string& stream, const std::string& stem)
{
    const Json json = line("name");
    cJSON_AddStringToObject(json.get(), "stream", stream.c_str());
    cJSON_AddStringToObject(json.get(), "stem", stem.c_str());
    if (const Status status = m_folder.note(printed(json)); !status.ok()) {
        libraryLog("journal: %s", status.detail().c_str());
    }
}

Status JobJournal::storeText(EncodedPage& page)
{
    const std::vector<std::uint8_t> bytes(page.text.begin(), page.text.end());
    const Status status =
        m_folder.store(page.file.filename().string() + "-text", bytes, page.textFile);
    return status.ok() ? m_folder.note(textLine(page)) : status;
}

void JobJournal::noteCommit(const std::filesystem::path& hidden, const std::filesystem::path& file,
    const std::vector<EncodedPage>& pages)
{
    if (const Status status = m_folder.note(commitLine(hidden, file, pages)); !status.ok()) {
        libraryLog("journal: %s", status.detail().c_str());
    }
}

void JobJournal::noteCommitFailed()
{
    if (const Status status = m_folder.note(printed(line("void"))); !status.ok()) {
        libraryLog("journal: %s", status.detail().c_str());
    }
}

void JobJournal::pagesSaved(const std::vector<EncodedPage>& pages)
{
    pagesDropped(pages);
}

void JobJournal::pagesDropped(const std::vector<EncodedPage>& pages)
{
    for (const EncodedPage& page : pages) {
        unlink(page.file.c_str());
        if (!page.textFile.empty()) {
            unlink(page.textFile.c_str());
        }
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_unsaved -= static_cast<int>(pages.size());
}

void JobJournal::close()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_unsaved == 0) {
        m_folder.remove();
    } else if (!m_folder.path().empty()) {
        libraryLog("%d pages are kept in %s", m_unsaved, m_folder.path().c_str());
    }
}

bool JobJournal::takeOver(const std::filesystem::path& folder)
{
    return m_folder.takeOver(folder);
}

JobJournal::Leftover JobJournal::leftover() const
{
    Leftover result;
    std::vector<Commit> commits;
    for (const std::string& text : m_folder.journal()) {
        const Json json(cJSON_Parse(text.c_str()));
        const std::string kind = json ? textOf(json, "kind") : "";
        if (kind == "output") {
            result.output = outputOf(json);
            result.readable = true;
        } else if (kind == "page") {
            EncodedPage page = pageOf(json, m_folder.path());
            if (isWhole(page.file, numberOf(json, "bytes"))) {
                result.unsaved.push_back(std::move(page));
            }
        } else if (kind == "name") {
            result.names[textOf(json, "stream")] = textOf(json, "stem");
        } else if (kind == "text") {
            giveText(json, m_folder.path(), result.unsaved);
        } else if (kind == "commit") {
            commits.push_back(commitOf(json, m_folder.path()));
        } else if (kind == "void" && !commits.empty()) {
            commits.pop_back();
        }
    }
    std::set<std::filesystem::path> saved;
    for (const Commit& commit : commits) {
        if (hasHappened(commit)) {
            ++result.files;
            saved.insert(commit.payloads.begin(), commit.payloads.end());
        }
    }
    result.unsaved.erase(std::remove_if(result.unsaved.begin(), result.unsaved.end(),
                             [&](const EncodedPage& page) { return saved.count(page.file) != 0; }),
        result.unsaved.end());
    std::stable_sort(result.unsaved.begin(), result.unsaved.end(),
        [](const EncodedPage& a, const EncodedPage& b) { return a.number < b.number; });
    return result;
}

} // namespace orva
