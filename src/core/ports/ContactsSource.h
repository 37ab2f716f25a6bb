#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

namespace parcelory {

/// One of the places where somebody of an address book gets mail.
struct PlatformAddress {
    QString label;  ///< as shown: "home", "work" or the user's own word
    QString street; ///< one line or more, parted by line feeds
    QString city;
    QString state;
    QString zip;
    QString isoCountry; ///< two letters, of any case
};

/// A person or company as address books keep them: the system's contacts and vCard files.
struct PlatformContact {
    QString given;
    QString family;
    QString fullName; ///< for whoever has neither of the two
    QString organisation;
    QList<PlatformAddress> addresses;
    QStringList phones;
    QStringList emails;
};

/// The contacts of this machine's user, through the system's two interfaces for them. Every call may block for long and
/// comes from any thread; those that read throw AppError with the system's text.
class ContactsSource {
public:
    static constexpr int fullAccess = 3;

    /// Called for each person in turn; false ends the reading.
    using Take = std::function<bool(const PlatformContact &person)>;

    struct Request {
        qsizetype most = -1;   ///< persons; -1: all
        bool isUnified = true; ///< several entries of one person, from several accounts, are joined
    };

    virtual ~ContactsSource() = default;

    /// The system's number; fullAccess when everything may be read.
    virtual int authorizationStatus() = 0;
    /// Lets the system ask its user, when it has not yet, and waits for the answer.
    virtual bool requestAccess() = 0;

    /// The older interface: false when it cannot be opened.
    virtual bool openLegacy() = 0;
    virtual void readLegacy(const Take &take) = 0;

    /// The newer interface. A container is an account that holds contacts.
    virtual qsizetype containerCount() = 0;
    virtual void read(const Request &request, const Take &take) = 0;
};

} // namespace parcelory
