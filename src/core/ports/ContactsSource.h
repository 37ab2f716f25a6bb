#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

namespace parcelory {

/// A postal address of a contact.
struct PlatformAddress {
    QString label;  ///< as shown: "home", "work" or the user's own word
    QString street; ///< one or more lines, separated by line feeds
    QString city;
    QString state;
    QString zip;
    QString isoCountry; ///< two letters, of any case
};

/// A person or company as address books keep them: the system's contacts and vCard files.
struct PlatformContact {
    QString given;
    QString family;
    QString fullName; ///< used if both names above are empty
    QString organization;
    QList<PlatformAddress> addresses;
    QStringList phones;
    QStringList emails;
};

/// The user's contacts, through the system's two interfaces for them. Every call may block for a long time and may
/// come from any thread; calls that read throw AppError with the system's text.
class ContactsSource {
public:
    static constexpr int fullAccess = 3;
    static constexpr int limitedAccess = 4; ///< to the persons that the user has chosen

    /// Called for each person in turn; false ends the reading.
    using Take = std::function<bool(const PlatformContact &person)>;

    struct Request {
        qsizetype most = -1;   ///< the maximum number of persons; -1: all
        bool isUnified = true; ///< merge a person's entries from several accounts
    };

    virtual ~ContactsSource() = default;

    /// The system's status number, such as fullAccess and limitedAccess.
    virtual int authorizationStatus() = 0;
    /// Lets the system ask the user for access, unless it already has, and waits for the answer.
    virtual bool requestAccess() = 0;

    /// Opens the older interface; false on failure.
    virtual bool openLegacy() = 0;
    virtual void readLegacy(const Take &take) = 0;

    /// The newer interface. A container is an account that holds contacts.
    virtual qsizetype containerCount() = 0;
    virtual void read(const Request &request, const Take &take) = 0;
};

} // namespace parcelory
