#pragma once

#include "core/Observable.h"
#include "core/Task.h"

#include <QList>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

namespace parcelory {

class AppState;

/// The clerk's handbook: HTML pages that are installed with the program and open in the browser, without the network.
class Handbook : public Observable {
public:
    explicit Handbook(AppState &app) : m_app(app) {}

    Observed<bool> installed{this, false};

    /// Where the pages may be, for a program in this folder: a build, a package or an application bundle.
    static QStringList places(const QString &programFolder);
    /// Looks for the pages in these folders.
    Task<> load(QStringList folders);

    /// The file that leads to the paragraph about a message; empty if the handbook does not explain it.
    QString pageAbout(const QString &message) const;
    /// Opens a page in the browser, the first page if `page` is empty. Tells the clerk if that fails.
    Task<> open(QString page = {});

private:
    /// A paragraph of "When something goes wrong", and the messages that it explains.
    struct Paragraph {
        QString page;
        QRegularExpression message;
        qsizetype precision; ///< how much of the message is given; the rest are names and numbers
    };
    struct Contents {
        QString folder; ///< empty if there is no handbook
        QList<Paragraph> paragraphs;
    };
    static Contents read(const QStringList &folders);

    AppState &m_app;
    Contents m_contents;
};

} // namespace parcelory
