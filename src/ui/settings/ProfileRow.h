#pragma once

#include "app/settings/SettingsScreen.h"
#include "ui/parts/Badge.h"
#include "ui/parts/Button.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/PanelFrame.h"

namespace parcelory {

class FoldHeader;

/// A sender profile: one line that unfolds into its fields.
class ProfileRow : public PanelFrame {
public:
    ProfileRow(AppState &app, SettingsScreen &settings, const QUuid &id, QWidget *parent = nullptr);

    void refresh();
    void unfold();
    LineEdit *nameField() const { return m_name; }

private:
    QWidget *makeEditor();
    LineEdit *makeField(const QString &name, QString ShippoAddress::*member);

    AppState &m_app;
    SettingsScreen &m_settings;
    QUuid m_id;
    FoldHeader *m_header;
    Badge *m_isDefault;
    Button *m_makeDefault, *m_remove;
    LineEdit *m_name;
    QWidget *m_editor;
};

} // namespace parcelory
