#include "bench/truth/operation_measures.h"

#include "bench/truth/page_match.h"
#include "bench/truth/page_samples.h"
#include "bench/truth/thread_clock.h"
#include "scanlib/page/operations.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <map>
#include <stdexcept>

namespace truth {

namespace {

using orva::ImageSettings;
using orva::Page;
using orva::PageGroup;

std::string text(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string text(const char* format, ...)
{
    char buffer[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    return buffer;
}

class Times
{
public:
    PageGroup run(const Page& page, const ImageSettings& settings)
    {
        PageGroup group { page };
        const double start = threadMs();
        const orva::Status status = orva::runOperations(group, settings);
        m_ms.push_back(threadMs() - start);
        if (!status.ok()) {
            throw std::runtime_error(status.detail());
        }
        return group;
    }
    double median()
    {
        std::sort(m_ms.begin(), m_ms.end());
        return m_ms.empty() ? 0 : m_ms[m_ms.size() / 2];
    }

private:
    std::vector<double> m_ms;
};

/// Mean and largest of what was added.
struct Errors
{
    double sum = 0;
    double max = 0;
    int count = 0;

    void add(double error)
    {
        sum += error;
        max = std::max(max, error);
        ++count;
    }
    double mean() const { return count == 0 ? 0 : sum / count; }
};

struct Scanned
{
    PageTruth truth;
    Page page;
    QImage ink;
};

/// One measure: sees every page, then gives its row.
class Measure
{
public:
    Measure() = default;
    Measure(const Measure&) = delete;
    Measure& operator=(const Measure&) = delete;
    virtual ~Measure() = default;
    virtual void see(const Scanned& scanned) = 0;
    virtual void report(std::vector<Row>& rows) = 0;
};

/// Largest distance of the sheet's edges from those of the picture, millimetres.
double rectangleError(const PageMatch& match, const Page& output)
{
    const auto at = [&match](double x, double y) {
        return match.pageToOutput.map(QPointF(x * kPageWidth, y * kPageHeight));
    };
    const double worst = std::max({ std::abs(at(0, 0.5).x()), std::abs(at(0.5, 0).y()),
        std::abs(at(1, 0.5).x() - output.width), std::abs(at(0.5, 1).y() - output.height) });
    return worst / kPixelsPerMm;
}

long wordsCut(const PageMatch& match, const Page& output, const PageTruth& truth)
{
    const QRectF picture(-1, -1, output.width + 2, output.height + 2);
    const QVector<Word> words = truth.words();
    return std::count_if(words.begin(), words.end(), [&](const Word& word) {
        return !picture.contains(match.pageToOutput.mapRect(word.box()));
    });
}

class CropDeskew : public Measure
{
public:
    void see(const Scanned& scanned) override
    {
        ImageSettings settings;
        settings.autoCropDeskew = true;
        const PageGroup group = m_times.run(scanned.page, settings);
        ++m_pages;
        if (scanned.truth.words().size() < 10) {
            return; // nothing that could be found again
        }
        const auto match = matchPage(group.at(0), scanned.ink, scanned.truth);
        if (!match) {
            m_lost += ' ' + scanned.truth.name.toStdString();
            return;
        }
        const double angle = std::abs(match->degrees);
        m_angle.add(angle);
        if (angle > 0.2) {
            m_askew += text(" %s (%.2f)", qPrintable(scanned.truth.name), match->degrees);
        }
        if (scanned.truth.backing != "none") {
            m_rectangle[scanned.truth.backing.toStdString()].add(
                rectangleError(*match, group.at(0)));
        }
        m_cut += wordsCut(*match, group.at(0), scanned.truth);
    }
    void report(std::vector<Row>& rows) override
    {
        rows.push_back({ "Deskew", m_angle.count,
            text("angle error mean %.3f°, max %.3f°", m_angle.mean(), m_angle.max)
                + (m_askew.empty() ? "" : "; above 0.2°:" + m_askew)
                + (m_lost.empty() ? "" : "; page not found again:" + m_lost),
            m_times.median() });
        for (const auto& [backing, errors] : m_rectangle) {
            rows.push_back({ "Crop, " + backing + " backing", errors.count,
                text("edges of the sheet off by mean %.2f mm, max %.2f mm", errors.mean(),
                    errors.max),
                0 });
        }
        rows.push_back({ "Crop and deskew", m_pages, text("%ld words cut", m_cut), 0 });
    }

private:
    Times m_times;
    Errors m_angle;
    std::map<std::string, Errors> m_rectangle;
    std::string m_askew;
    std::string m_lost;
    long m_cut = 0;
    int m_pages = 0;
};

class Blank : public Measure
{
public:
    explicit Blank(bool deskewed)
        : m_deskewed(deskewed)
    {
    }
    void see(const Scanned& scanned) override
    {
        ImageSettings settings;
        settings.removeBlank = true;
        settings.autoCropDeskew = m_deskewed;
        const bool dropped = m_times.run(scanned.page, settings).empty();
        m_right.count(dropped == scanned.truth.blank);
        if (dropped != scanned.truth.blank) {
            m_wrong += ' ' + scanned.truth.name.toStdString();
        }
    }
    void report(std::vector<Row>& rows) override
    {
        rows.push_back({ m_deskewed ? "Blank pages, after crop and deskew" : "Blank pages",
            static_cast<int>(m_right.all),
            text("%ld of %ld decisions right", m_right.good, m_right.all)
                + (m_wrong.empty() ? "" : "; wrong:" + m_wrong),
            m_times.median() });
    }

private:
    bool m_deskewed;
    Times m_times;
    Share m_right;
    std::string m_wrong;
};

class Holes : public Measure
{
public:
    void see(const Scanned& scanned) override
    {
        ImageSettings settings;
        settings.removeHoles = true;
        // the operation comes after the crop, whose own faults are measured apart
        const Page sheet = straightened(scanned.page, scanned.truth);
        PageTruth upright = scanned.truth;
        upright.pageToScan = QTransform();
        const PageGroup group = m_times.run(sheet, settings);
        m_letters += lettersKept(sheet, {}, group.at(0), {}, upright, {});
        if (!upright.holes.isEmpty()) {
            const Share filled = holesFilled(group[0], upright);
            m_filled += filled;
            if (filled.good < filled.all) {
                m_left += text(
                    " %s (%ld of %ld)", qPrintable(scanned.truth.name), filled.good, filled.all);
            }
        }
        ++m_pages;
    }
    void report(std::vector<Row>& rows) override
    {
        rows.push_back({ "Punch holes", m_pages,
            text("%ld of %ld filled; %.2f %% of letters kept", m_filled.good, m_filled.all,
                100 * m_letters.value())
                + (m_left.empty() ? "" : "; left:" + m_left),
            m_times.median() });
    }

private:
    Times m_times;
    Share m_filled;
    Share m_letters;
    std::string m_left;
    int m_pages = 0;
};

class Dropout : public Measure
{
public:
    Dropout(orva::ColorMode mode, bool reinforced)
        : m_mode(mode)
        , m_reinforced(reinforced)
    {
    }
    void setLayers(const QString& folder) { m_folder = folder; }
    void see(const Scanned& scanned) override
    {
        if (scanned.truth.stampColor.isEmpty()) {
            return;
        }
        ImageSettings settings;
        settings.mode = m_mode;
        settings.dropout = scanned.truth.stampColor == "red" ? orva::ColorDropout::kRed
                                                             : orva::ColorDropout::kBlue;
        settings.reinforcedDropout = m_reinforced;
        const PageGroup group = m_times.run(scanned.page, settings);
        const QImage stamp = readLayer(m_folder, scanned.truth, "stamp");
        m_gone += stampGone(group.at(0), scanned.ink, stamp, scanned.truth);
        const QTransform& place = scanned.truth.pageToScan;
        m_letters += lettersKept(scanned.page, place, group[0], place, scanned.truth, {});
        ++m_pages;
    }
    void report(std::vector<Row>& rows) override
    {
        rows.push_back({ std::string("Dropout of stamps, ")
                + (m_mode == orva::ColorMode::kGray ? "grey" : "colour")
                + (m_reinforced ? ", reinforced" : ""),
            m_pages,
            text("%.2f %% of the stamp gone; %.2f %% of letters kept", 100 * m_gone.value(),
                100 * m_letters.value()),
            m_times.median() });
    }

private:
    orva::ColorMode m_mode;
    bool m_reinforced;
    QString m_folder;
    Times m_times;
    Share m_gone;
    Share m_letters;
    int m_pages = 0;
};

class DenoiseMeasure : public Measure
{
public:
    explicit DenoiseMeasure(orva::Denoise strength)
        : m_strength(strength)
    {
    }
    void see(const Scanned& scanned) override
    {
        ImageSettings settings;
        settings.denoise = m_strength;
        const PageGroup group = m_times.run(scanned.page, settings);
        m_gone += specksGone(group.at(0), scanned.ink, scanned.truth);
        const QTransform& place = scanned.truth.pageToScan;
        m_letters += lettersKept(scanned.page, place, group[0], place, scanned.truth, {});
        m_marks += lettersKept(scanned.page, place, group[0], place, scanned.truth, isSmallMark);
        ++m_pages;
    }
    void report(std::vector<Row>& rows) override
    {
        rows.push_back(
            { m_strength == orva::Denoise::kStrong ? "Denoise, strong" : "Denoise, normal", m_pages,
                text("%.1f %% of specks gone; kept: %.2f %% of letters, %.2f %% of %ld "
                     "punctuation marks",
                    100 * m_gone.value(), 100 * m_letters.value(), 100 * m_marks.value(),
                    m_marks.all),
                m_times.median() });
    }

private:
    orva::Denoise m_strength;
    Times m_times;
    Share m_gone;
    Share m_letters;
    Share m_marks;
    int m_pages = 0;
};

/// Operations that make paper lighter: how much of it is light, and whether the print stays.
class Lightening : public Measure
{
public:
    Lightening(std::string name, bool ImageSettings::*operation)
        : m_name(std::move(name))
        , m_operation(operation)
    {
    }
    void see(const Scanned& scanned) override
    {
        if (!scanned.truth.stampColor.isEmpty() || scanned.truth.words().isEmpty()) {
            return;
        }
        ImageSettings settings;
        settings.*m_operation = true;
        const PageGroup group = m_times.run(scanned.page, settings);
        m_before += paperAbove(245, scanned.page, scanned.ink, scanned.truth);
        m_after += paperAbove(245, group.at(0), scanned.ink, scanned.truth);
        const QTransform& place = scanned.truth.pageToScan;
        m_letters += lettersKept(scanned.page, place, group[0], place, scanned.truth, {});
        ++m_pages;
    }
    void report(std::vector<Row>& rows) override
    {
        rows.push_back({ m_name, m_pages,
            text("%.1f %% of the paper above level 245 (before: %.1f %%); %.2f %% of letters kept",
                100 * m_after.value(), 100 * m_before.value(), 100 * m_letters.value()),
            m_times.median() });
    }

private:
    const std::string m_name;
    bool ImageSettings::*const m_operation;
    Times m_times;
    Share m_before;
    Share m_after;
    Share m_letters;
    int m_pages = 0;
};

/// Fixed for the document type of pictures, by the paper for that of text.
class BlackWhite : public Measure
{
public:
    explicit BlackWhite(orva::DocumentType document)
        : m_document(document)
    {
    }
    void see(const Scanned& scanned) override
    {
        if (!scanned.truth.stampColor.isEmpty() || scanned.truth.words().isEmpty()) {
            return;
        }
        ImageSettings settings;
        settings.mode = orva::ColorMode::kBlackWhite;
        settings.document = m_document;
        const PageGroup group = m_times.run(scanned.page, settings);
        m_error.add(1 - inkAgreement(group.at(0), scanned.ink, scanned.truth));
    }
    void report(std::vector<Row>& rows) override
    {
        rows.push_back(
            { m_document == orva::DocumentType::kText ? "Threshold by the paper" : "Threshold 128",
                m_error.count,
                text("agreement with the print (F1) mean %.3f, least %.3f", 1 - m_error.mean(),
                    1 - m_error.max),
                m_times.median() });
    }

private:
    orva::DocumentType m_document;
    Times m_times;
    Errors m_error;
};

} // namespace

std::vector<Row> measureOperations(const QString& folder)
{
    CropDeskew deskew;
    Blank blank(false);
    Blank blankDeskewed(true);
    Holes holes;
    Dropout gray(orva::ColorMode::kGray, false);
    Dropout color(orva::ColorMode::kColor, false);
    Dropout reinforced(orva::ColorMode::kColor, true);
    DenoiseMeasure normal(orva::Denoise::kNormal);
    DenoiseMeasure strong(orva::Denoise::kStrong);
    Lightening background("Background", &ImageSettings::removeBackground);
    Lightening levels("Automatic levels", &ImageSettings::autoLevel);
    BlackWhite fixedThreshold(orva::DocumentType::kPictures);
    BlackWhite byPaper(orva::DocumentType::kText);
    for (Dropout* dropout : { &gray, &color, &reinforced }) {
        dropout->setLayers(folder);
    }
    Measure* const measures[] = { &deskew, &blank, &blankDeskewed, &holes, &gray, &color,
        &reinforced, &normal, &strong, &background, &levels, &fixedThreshold, &byPaper };
    for (const PageTruth& truth : readTruthSet(folder)) {
        const Scanned scanned { truth, readScan(folder, truth), readLayer(folder, truth, "ink") };
        for (Measure* measure : measures) {
            measure->see(scanned);
        }
        std::fprintf(stderr, "%s\n", qPrintable(truth.name));
    }
    std::vector<Row> rows;
    for (Measure* measure : measures) {
        measure->report(rows);
    }
    return rows;
}

} // namespace truth
