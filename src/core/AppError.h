#pragma once

#include <QString>

#include <exception>

namespace parcelory {

/// A failure whose description is a text for the clerk. Servers and tools write part of many descriptions, so a
/// description ends after `longest` characters.
class AppError : public std::exception {
public:
    static constexpr qsizetype longest = 2000;

    explicit AppError(const QString &description);

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
    /// `code`: a child process's exit status, or a number that the thrower's header names; 0 if there is neither.
    SystemError(int code, QString description);

    int code() const { return m_code; }

private:
    int m_code;
};

/// The text to show for any exception: an AppError's description, otherwise what().
QString describe(const std::exception &error);

} // namespace parcelory
