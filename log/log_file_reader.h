// Reads a log file in portions of text, for showing. No widgets.
#pragma once

#include <QFile>
#include <QString>
#include <QTextDecoder>

#include <memory>

/// Bytes may be anything: what is not UTF-8, and control characters, come as U+FFFD, and a line
/// longer than kMaxLine characters is cut into several, so that showing it stays quick. One thread.
class LogFileReader
{
public:
    static constexpr qint64 kPortionBytes = 256LL * 1024;
    static constexpr int kMaxLine = 4096; ///< characters
    /// Of a longer file the last part is read; a day's log of this size takes some 200 MB to show.
    static constexpr qint64 kMaxBytes = 64LL * 1024 * 1024;

    explicit LogFileReader(const QString& path);

    [[nodiscard]] bool isOpen() const { return m_file.isOpen(); }
    /// Bytes before the part that is read.
    [[nodiscard]] qint64 skippedBytes() const { return m_skipped; }
    [[nodiscard]] bool atEnd() const { return m_atEnd; }
    /// 0...100
    [[nodiscard]] int percentRead() const;
    /// The next portion; line breaks are "\n". May be empty.
    [[nodiscard]] QString next();

private:
    [[nodiscard]] QString cleaned(QString text);

    QFile m_file;
    qint64 m_skipped = 0;
    qint64 m_size = 0; ///< when it was opened: a log that grows does not keep the reader busy
    bool m_atEnd = true;
    int m_lineLength = 0; ///< characters of the line that is not complete yet
    bool m_cutStart = false; ///< the first line is a piece and is dropped
    std::unique_ptr<QTextDecoder> m_decoder;
};
