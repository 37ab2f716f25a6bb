#pragma once

#include <QString>

#include <exception>

namespace parcelory {

/// A failure whose description is a text for the clerk.
class AppError : public std::exception {
public:
    explicit AppError(QString description);

    const QString &description() const { return m_description; }
    /// True when the clerk's own input was rejected: the screen that took it shows why.
    virtual bool isInputError() const { return false; }
    const char *what() const noexcept override { return m_utf8.constData(); }

private:
    QString m_description;
    QByteArray m_utf8; ///< holds the text that what() returns
};

/// JSON that does not decode into the expected record; the description names the key.
class DecodeError : public AppError {
public:
    using AppError::AppError;
};

/// A failure of a device or a child process.
class SystemError : public AppError {
public:
    /// `code`: 1 no printer queue, 2 paused queue, 3 not a label, 4 no answer in time; otherwise a child process's exit
    /// status.
    SystemError(int code, QString description);

    int code() const { return m_code; }

private:
    int m_code;
};

/// The text to show for any exception: an AppError's description, otherwise what().
QString describe(const std::exception &error);

} // namespace parcelory
