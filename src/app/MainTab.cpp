#include "app/MainTab.h"

namespace parcelory {
using namespace Qt::StringLiterals;

const QList<MainTabInfo> &mainTabs()
{
    static const QList<MainTabInfo> table = {{MainTab::newLabel, u"New Label"_s},
                                             {MainTab::mailingLog, u"My Mailing Log"_s},
                                             {MainTab::masterLog, u"Master Log"_s},
                                             {MainTab::settings, u"Settings"_s}};
    return table;
}

} // namespace parcelory
