#include "shell/ui/log/MasterLogView.h"

#include "shell/ui/parts/Notice.h"

#include <QVBoxLayout>

namespace parcelory {
using namespace Qt::StringLiterals;

MasterLogView::MasterLogView(QWidget *parent) : Surface(&Tokens::sheet, parent)
{
    auto *column = new QVBoxLayout(this);
    column->addWidget(new EmptyState(
        u"ui_document"_s, u"In a later version, the labels that every desk bought on the Shippo account will be listed "
                          "here; this desk's own are in My Mailing Log."_s));
}

} // namespace parcelory
