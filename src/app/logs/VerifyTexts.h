#pragma once

#include "records/LogChain.h"

#include <QString>

/// What a comparison of the mailing log with its chain of hashes found, in the clerk's words.
namespace parcelory::VerifyTexts {

/// "All 18,412 labels are as they were bought." or how many problems there are.
QString summaryOf(const LogChain::Report &report);
/// The row of a list: which label, and what is wrong with it.
QString sentenceOf(const LogChain::Finding &finding);

} // namespace parcelory::VerifyTexts
