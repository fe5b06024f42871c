// Measures the scanner library against a truth set and prints Markdown.
//
//   truth-measure operations FOLDER      the page operations
#include "bench/truth/operation_measures.h"

#include <cstdio>
#include <stdexcept>

namespace {

int operations(const QString& folder)
{
    std::printf("| Operation | Pages | Quality | ms a page |\n|---|---|---|---|\n");
    for (const truth::Row& row : truth::measureOperations(folder)) {
        std::printf("| %s | %d | %s | ", row.operation.c_str(), row.pages, row.quality.c_str());
        row.ms > 0 ? std::printf("%.1f |\n", row.ms) : std::printf("|\n");
    }
    return 0;
}

int run(const QStringList& words)
{
    if (words.size() == 3 && words[1] == "operations") {
        return operations(words[2]);
    }
    throw std::runtime_error("usage: see the head of the source");
}

} // namespace

int main(int argc, char** argv)
{
    QStringList words;
    for (int i = 0; i < argc; ++i) {
        words.append(QString::fromLocal8Bit(argv[i]));
    }
    try {
        return run(words);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
