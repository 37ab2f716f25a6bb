#pragma once

#include "core/AppState.h"
#include "shell/ui/parts/Follower.h"
#include "shell/ui/parts/TextLabel.h"

class QBuffer;
class QPdfDocument;
class QPdfView;

namespace parcelory {

class Button;

/// The secondary window "SCAN Form": the day's form, to be printed and handed to the carrier.
class ScanFormWindow : public QWidget {
    Q_OBJECT
public:
    explicit ScanFormWindow(AppState &app, QWidget *parent = nullptr);
    ~ScanFormWindow() override;

private:
    enum class Operation { print, save };

    QWidget *makeToolbar();
    void begin(Operation operation);
    Task<> run(Operation operation, QByteArray form);
    void say(const QString &outcome);
    void refresh();

    AppState &m_app;
    QBuffer *m_bytes;
    QPdfDocument *m_document;
    QPdfView *m_view;
    ElidedLabel *m_outcome;
    Button *m_save;
    Button *m_print;
    bool m_busy = false;
    Follower m_follower;
};

} // namespace parcelory
