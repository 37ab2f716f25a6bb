#pragma once

#include "app/label/LabelScreen.h"
#include "ui/parts/Field.h"
#include "ui/parts/Follower.h"

namespace parcelory {

/// The list of packagings: drawing, name and a second line, in groups; typing finds a name.
class MailpieceChoice : public Choice {
    Q_OBJECT
public:
    MailpieceChoice(AppState &app, LabelScreen &screen, QWidget *parent = nullptr);

private:
    void refill();
    void showCurrent();

    AppState &m_app;
    LabelScreen &m_screen;
    QList<MailpieceSelection> m_selections; ///< by the number in the row's data
    Follower m_lists;
    Follower m_current;
};

} // namespace parcelory
