// Runs a fuzz target over the kept inputs, in builds that have no fuzzer.
#include "tests/fuzz/scratch.h"

#include <iterator>

int main(int argc, char** argv)
{
    int inputs = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            std::ifstream in(entry.path(), std::ios::binary);
            const std::string bytes((std::istreambuf_iterator<char>(in)), {});
            std::cerr << entry.path() << '\n';
            LLVMFuzzerTestOneInput(
                reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
            ++inputs;
        }
    }
    return inputs > 0 ? 0 : 1;
}
