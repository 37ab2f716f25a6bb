#include "app/logs/VerifyTexts.h"

#include "core/Words.h"

#include <QLocale>
#include <QStringList>

#include <algorithm>

namespace parcelory::VerifyTexts {
using namespace Qt::StringLiterals;

namespace {

using LogChain::Part;

constexpr Word<Part> partNames[] = {
    {Part::time, u"time"},
    {Part::service, u"service"},
    {Part::postage, u"postage"},
    {Part::recipient, u"recipient"},
    {Part::tracking, u"tracking number"},
    {Part::transaction, u"transaction"},
    {Part::label, u"stored label"},
    {Part::details, u"weight or description"},
    {Part::status, u"status"},
};

/// "Label 312, 11/20/26, Eleanor Whitfield"
QString labelOf(const LogChain::Finding &finding)
{
    QStringList words{u"Label %1"_s.arg(finding.shipment)};
    if (finding.createdAt.isValid())
        words += QLocale::c().toString(finding.createdAt.toLocalTime(), u"MM/dd/yy"_s);
    if (const QString name = finding.recipient.section(u',', 0, 0).trimmed(); !name.isEmpty())
        words += name;
    return words.join(u", "_s);
}

} // namespace

QString summaryOf(const LogChain::Report &report)
{
    const QLocale english(QLocale::English, QLocale::UnitedStates);
    const qsizetype count = std::ranges::count_if(report.findings, [](const LogChain::Finding &finding) {
        return finding.problem != LogChain::Problem::otherLog; // no entry was changed
    });
    if (count == 0 && !report.findings.isEmpty())
        return u"The rows match their seals, but copies in the copies folder do not."_s;
    if (count == 0 && report.labels == 0)
        return u"The mailing log has no labels."_s;
    if (count == 0 && report.labels == 1)
        return u"The only label is as it was bought."_s;
    if (count == 0)
        return u"All %1 labels are as they were bought."_s.arg(english.toString(report.labels));
    if (report.findings.size() >= LogChain::Walk::mostFindings) // the walk lists no more
        return u"%1 or more entries were changed after buying:"_s.arg(english.toString(count));
    return count == 1 ? u"1 entry was changed after buying:"_s
                      : u"%1 entries were changed after buying:"_s.arg(english.toString(count));
}

QString sentenceOf(const LogChain::Finding &finding)
{
    QStringList parts;
    switch (finding.problem) {
    case LogChain::Problem::changed:
        for (const LogChain::Part part : finding.parts)
            parts += textOf(partNames, part);
        return u"%1: the %2 was changed."_s.arg(labelOf(finding), parts.join(u", the "_s));
    case LogChain::Problem::removed:
        return u"%1 was removed."_s.arg(labelOf(finding));
    case LogChain::Problem::added:
        return u"%1: another program added this label, or changed its check value."_s.arg(labelOf(finding));
    case LogChain::Problem::chain:
        return finding.shipment
                   ? u"%1: the seal was changed, or the seal before it was removed."_s.arg(labelOf(finding))
                   : u"The latest rows were removed together with their seals."_s;
    case LogChain::Problem::unsealed:
        return u"The seals of all rows were removed."_s;
    case LogChain::Problem::otherLog:
        return u"Some copies in the copies folder belong to another mailing log."_s;
    }
    return {};
}

} // namespace parcelory::VerifyTexts
