#include "ui/preview/VerdictNotice.h"

#include "app/purchase/LabelVerdictTexts.h"
#include "ui/theme/Tokens.h"

namespace parcelory {
using namespace Qt::StringLiterals;

VerdictNotice::VerdictNotice(QWidget *parent) : Notice({}, &Tokens::muted, FontRole::captionStrong, parent) {}

void VerdictNotice::setVerdict(const std::optional<LabelVerdict> &verdict)
{
    switch (LabelVerdictTexts::outcomeOf(verdict)) {
    case LabelOutcome::same:
        setLook({}, &Tokens::ok);
        break;
    case LabelOutcome::different:
        setLook(u"ui_warning"_s, &Tokens::warn);
        break;
    case LabelOutcome::notFound:
    case LabelOutcome::unchecked:
        setLook(u"ui_info"_s, &Tokens::muted);
        break;
    case LabelOutcome::notCompared:
        setLook({}, &Tokens::muted);
        break;
    }
    if (const QString line = LabelVerdictTexts::lineOf(verdict); line != text())
        setText(line);
}

} // namespace parcelory
