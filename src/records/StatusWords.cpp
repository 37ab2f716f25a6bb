#include "records/StatusWords.h"

#include "core/Words.h"

namespace parcelory {

namespace {

constexpr Word<LogStatus> logWords[] = {
    {LogStatus::printed, u"PRINTED"},
    {LogStatus::delivered, u"DELIVERED"},
    {LogStatus::refundPending, u"REFUND_PENDING"},
    {LogStatus::refundRequested, u"REFUND_REQUESTED"},
    {LogStatus::refunded, u"REFUNDED"},
    {LogStatus::refundError, u"REFUND_ERROR"},
};

constexpr Word<TrackingStatus> trackingWords[] = {
    {TrackingStatus::unknown, u"UNKNOWN"},   {TrackingStatus::preTransit, u"PRE_TRANSIT"},
    {TrackingStatus::transit, u"TRANSIT"},   {TrackingStatus::delivered, u"DELIVERED"},
    {TrackingStatus::returned, u"RETURNED"}, {TrackingStatus::failure, u"FAILURE"},
};

} // namespace

std::optional<LogStatus> logStatusFrom(QAnyStringView word)
{
    return valueOf(logWords, word);
}

QString wordOf(LogStatus status)
{
    return textOf(logWords, status);
}

TrackingStatus trackingStatusFrom(QAnyStringView word)
{
    return valueOf(trackingWords, word, Qt::CaseInsensitive).value_or(TrackingStatus::unknown);
}

QString wordOf(TrackingStatus status)
{
    return textOf(trackingWords, status);
}

} // namespace parcelory
