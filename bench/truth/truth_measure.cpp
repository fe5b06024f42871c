// Measures the scanner library against a truth set and prints Markdown.
//
//   truth-measure operations FOLDER          the page operations
//   truth-measure text FOLDER BOXES [moved]  what `pdftotext -raw -bbox` says of a document of all
//                                            pages; "moved": they were cropped or turned
//   truth-measure blanks FOLDER TEXT         what `pdftotext -raw` says of it
//   truth-measure png FOLDER ROUNDS          the PNG encoder beside libpng
//   truth-measure cells FOLDER CSV_FOLDER    the pages with tables as LibreOffice reads them
#include "bench/truth/operation_measures.h"
#include "bench/truth/png_peer.h"
#include "bench/truth/text_measures.h"

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
    if (words.size() == 4 && words[1] == "png") {
        truth::comparePng(words[2], words[3].toInt());
        return 0;
    }
    const bool moved = words.size() == 5 && words[4] == "moved";
    if ((words.size() == 4 || moved) && words[1] == "text") {
        truth::measureText(words[2], words[3], !moved);
        return 0;
    }
    if (words.size() == 4 && words[1] == "blanks") {
        truth::measureBlanks(words[2], words[3]);
        return 0;
    }
    if (words.size() == 4 && words[1] == "cells") {
        truth::measureCells(words[2], words[3]);
        return 0;
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
