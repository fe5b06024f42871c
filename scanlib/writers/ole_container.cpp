#include "scanlib/writers/ole_container.h"

#include <dlfcn.h>
#include <gsf/gsf-doc-meta-data.h>
#include <gsf/gsf-meta-names.h>
#include <gsf/gsf-msole-utils.h>
#include <gsf/gsf-outfile-msole.h>
#include <gsf/gsf-output-memory.h>
#include <gsf/gsf-timestamp.h>
#include <gsf/gsf-utils.h>

#include <memory>
#include <mutex>

namespace orva {

namespace {

struct Unref
{
    void operator()(void* object) const { g_object_unref(object); }
};
template <typename Type>
using Object = std::unique_ptr<Type, Unref>;

/// The library registers types that cannot be taken back, so it must not be unloaded with ours: it
/// would find them taken when it comes again.
void prepareLibrary()
{
    Dl_info where {};
    if (dladdr(reinterpret_cast<void*>(&gsf_init), &where) != 0) {
        dlopen(where.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
    }
    gsf_init();
}

void setText(GsfDocMetaData* facts, const char* name, const std::string& text)
{
    auto* const value = g_new0(GValue, 1); // becomes the property's
    g_value_init(value, G_TYPE_STRING);
    g_value_set_string(value, text.c_str());
    gsf_doc_meta_data_insert(facts, g_strdup(name), value);
} // NOLINT(clang-analyzer-unix.Malloc): the value is the property's now

void setTime(GsfDocMetaData* facts, const char* name, std::int64_t unixSeconds)
{
    GsfTimestamp* const time = gsf_timestamp_new();
    gsf_timestamp_set_time(time, static_cast<guint64>(unixSeconds));
    auto* const value = g_new0(GValue, 1);
    g_value_init(value, GSF_TIMESTAMP_TYPE);
    gsf_timestamp_to_value(time, value);
    gsf_timestamp_free(time);
    gsf_doc_meta_data_insert(facts, g_strdup(name), value);
} // NOLINT(clang-analyzer-unix.Malloc): the value is the property's now

bool addWorkbook(GsfOutfile* container, const std::vector<std::uint8_t>& workbook)
{
    const Object<GsfOutput> stream(gsf_outfile_new_child(container, "Workbook", FALSE));
    return stream && gsf_output_write(stream.get(), workbook.size(), workbook.data()) != FALSE
        && gsf_output_close(stream.get()) != FALSE;
}

bool addFacts(GsfOutfile* container, const DocumentInfo& info)
{
    const Object<GsfDocMetaData> facts(gsf_doc_meta_data_new());
    setText(facts.get(), GSF_META_NAME_TITLE, info.title);
    setText(facts.get(), GSF_META_NAME_GENERATOR, info.producer);
    setTime(facts.get(), GSF_META_NAME_DATE_CREATED, info.createdUnixSeconds);
    const struct
    {
        const char* name;
        gboolean ofDocument;
    } parts[] = { { "\05SummaryInformation", FALSE }, { "\05DocumentSummaryInformation", TRUE } };
    for (const auto& part : parts) {
        const Object<GsfOutput> stream(gsf_outfile_new_child(container, part.name, FALSE));
        if (!stream
            || gsf_doc_meta_data_write_to_msole(facts.get(), stream.get(), part.ofDocument) == FALSE
            || gsf_output_close(stream.get()) == FALSE) {
            return false;
        }
    }
    return true;
}

} // namespace

Status oleFile(const std::vector<std::uint8_t>& workbook, const DocumentInfo& info,
    std::vector<std::uint8_t>& out)
{
    static std::once_flag prepared;
    std::call_once(prepared, prepareLibrary);
    const Object<GsfOutput> memory(gsf_output_memory_new());
    {
        const Object<GsfOutfile> container(gsf_outfile_msole_new(memory.get()));
        if (!container || !addWorkbook(container.get(), workbook)
            || !addFacts(container.get(), info)
            || gsf_output_close(GSF_OUTPUT(container.get())) == FALSE) {
            return { kInternal, "the container of the workbook cannot be made" };
        }
    }
    const guint8* const bytes = gsf_output_memory_get_bytes(GSF_OUTPUT_MEMORY(memory.get()));
    out.assign(bytes, bytes + gsf_output_size(memory.get()));
    return {};
}

} // namespace orva
