#pragma once

#include "core/ports/WebSession.h"

#include <QStringList>

namespace parcelory::test {

/// A page that answers scripts as the test says; records loads and scripts.
class FakeWebSession : public WebSession {
public:
    void setDelegate(Delegate taken) override { delegate = std::move(taken); }
    void load(const QUrl &url, std::chrono::milliseconds limit) override
    {
        crashed = false;
        loadLimit = limit;
        loaded += url.toString();
    }
    Task<QVariant> evaluate(QString expression) override
    {
        evaluated += expression;
        co_return answer ? answer(expression) : QVariant();
    }
    bool hasCrashed() const override { return crashed; }
    void clear() override { ++cleared; }

    Delegate delegate;
    std::function<QVariant(const QString &expression)> answer;
    QStringList loaded, evaluated;
    std::chrono::milliseconds loadLimit{}; ///< of the last load
    bool crashed = false;
    int cleared = 0;
};

} // namespace parcelory::test
