// The error catalogue: what the operator is told for each code of the scanner library. An XML file,
// read anew before each use so that edits take effect at the next error. No widgets.
#pragma once

#include <QString>

#include <memory>
#include <unordered_map>

struct ErrorEntry
{
    bool isError = false; ///< critical look
    QString isShow; ///< as written; the box is shown only for "1"
    QString contents; ///< the message
};

/// One thread at a time.
class ErrorCatalogue
{
public:
    ErrorCatalogue() { m_entries.max_load_factor(1.0F); }

    /// (Re)loads the catalogue. A file that is not there leaves the map as it is; one that cannot
    /// be parsed leaves it empty. Each child element of the root is an entry; one whose "id" or
    /// "ierror" is missing or no number is left out. Of entries with the same id the last one
    /// counts. Every fault goes to the run log. The path may have any length.
    void getErrorCode(const QString& path);

    /// Null for a code that the catalogue does not hold. Valid until the next load.
    const ErrorEntry* find(int code) const;
    std::size_t size() const { return m_entries.size(); }

private:
    std::unordered_map<int, std::unique_ptr<ErrorEntry>> m_entries;
};
