#pragma once

#include "core/Setting.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace parcelory::settings {
using namespace Qt::StringLiterals;

/// What the clerk reads if Preferences::synchronize() fails.
inline const QString notStored =
    u"Settings can't be stored: what you change now is lost when Parcelory ends. The disk may "
    "be full or write-protected."_s;

// Every preference key with its type and default. No other file spells a key.

inline const Setting<QString> zebraQueue{u"printer.zebraQueue"_s, {}};
inline const Setting<QString> documentQueue{u"printer.documentQueue"_s, {}}; ///< empty: PDFs open in the viewer
inline const Setting<bool> rotate180{u"printer.rotate180"_s, true};
inline const Setting<QStringList> turnedQueues{u"printer.turnedQueues"_s, {}}; ///< were sent a rotated label

inline const Setting<bool> desklineRemember{u"deskline.remember"_s, false}; ///< sign in automatically at the next start
inline const Setting<QString> signInName{u"parcelory.email"_s, {}};         ///< as last typed

inline const Setting<QStringList> labelChoice{u"label.lastChoice"_s, {}};              ///< carrier, class, mailpiece
inline const Setting<QStringList> mailpieceByWeight{u"label.mailpieceByWeight"_s, {}}; ///< "ounces=mailpiece"
inline const Setting<QStringList> customsSigners{u"customs.signers"_s, {}};            ///< "user=signer"

inline const Setting<QStringList> rulesOff{u"rules.off"_s, {}}; ///< ids of shipping rules that are switched off

// The question before a dear label.
inline const Setting<bool> spendGuardOn{u"spendGuard.on"_s, false};
inline const Setting<QString> spendGuardAbove{u"spendGuard.above"_s, u"100.00"_s}; ///< US dollars, as typed
inline const Setting<bool> spendGuardNamesCheaper{u"spendGuard.namesCheaper"_s, true};
inline const Setting<bool> spendGuardWantsReference{u"spendGuard.wantsReference"_s, false};

inline const Setting<QString> storageChecked{u"ui.storageChecked"_s, {}}; ///< when; see SettingsScreen::checkStorage
inline const Setting<bool> showAddressSidebar{u"ui.showAddressSidebar"_s, true};
inline const Setting<QString> addressBookMode{u"addressbook.mode"_s, u"endicia"_s}; ///< or "deskline"
inline const Setting<QByteArray> windowGeometry{u"ui.windowGeometry"_s, {}};
inline const Setting<QByteArray> labelWindowGeometry{u"ui.labelWindowGeometry"_s, {}};
inline const Setting<QString> labelFolder{u"ui.labelFolder"_s, {}}; ///< where a label's picture was saved last
inline const Setting<bool> labelWindowUpright{u"ui.labelWindowUpright"_s, false}; ///< not turned as it prints
inline const Setting<QByteArray> endOfDayGeometry{u"ui.endOfDayGeometry"_s, {}};
inline const Setting<QByteArray> addressBookGeometry{u"ui.addressBookGeometry"_s, {}};

inline const Setting<QStringList> shippoKeyNames{u"shippo.keyNames"_s, {}}; ///< in the order they were added
inline const Setting<QString> shippoActiveKeyName{u"shippo.activeKeyName"_s, {}};

// If these are missing, the deployment's values apply.
inline const Setting<QString> senderFallbackEmail{u"sender.fallbackEmail"_s, {}};
inline const Setting<QString> senderFallbackPhone{u"sender.fallbackPhone"_s, {}};

// The single return address of earlier versions, read once when the sender profiles are created.
inline const Setting<QString> legacySenderName{u"sender.name"_s, {}};
inline const Setting<QString> legacySenderCompany{u"sender.company"_s, {}};
inline const Setting<QString> legacySenderStreet1{u"sender.street1"_s, {}};
inline const Setting<QString> legacySenderStreet2{u"sender.street2"_s, {}};
inline const Setting<QString> legacySenderCity{u"sender.city"_s, {}};
inline const Setting<QString> legacySenderState{u"sender.state"_s, {}};
inline const Setting<QString> legacySenderZip{u"sender.zip"_s, {}};
inline const Setting<QString> legacySenderPhone{u"sender.phone"_s, {}};
inline const Setting<QString> legacySenderEmail{u"sender.email"_s, {}};

// The clerk's layout of the logs, in Qt's own format.
inline const Setting<QByteArray> mailingLogColumns{u"ui.mailingLogColumns"_s, {}};
inline const Setting<QByteArray> mailingLogSplitter{u"ui.mailingLogSplitter"_s, {}};
inline const Setting<qint64> lastSyncedRefund{u"log.lastSyncedRefund"_s,
                                              0}; ///< the next sync continues with older rows
inline const Setting<bool> asksForTracking{u"log.asksForTracking"_s, true};
inline const Setting<QString> copiesFolder{u"records.copiesFolder"_s, {}}; ///< empty: in the data folder
inline const Setting<QByteArray> masterLogColumns{u"ui.masterLogColumns"_s, {}};

} // namespace parcelory::settings
