#pragma once

#include <QObject>
#include <QProperty>

#include <typeinfo>
#include <utility>
#include <vector>

namespace parcelory {

/// A model that announces every change of its state with one signal, so that a view follows the model and lists no
/// fields. A field cannot be forgotten: it is Observed, and registers itself with its model. Main thread only.
class Observable : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    struct Field {
        QUntypedPropertyData *data;
        const std::type_info *type; ///< of the value
    };
    /// Every field of this model, in the order of declaration; without those of the models that it is built on.
    const std::vector<Field> &fields() const { return m_fields; }
    /// The models that this model is built on.
    const std::vector<const Observable *> &parts() const { return m_parts; }

signals:
    /// A field of this model, or of a model that it is built on, has changed. Emitted for every single change, possibly
    /// in the middle of an operation: RefreshScheduler follows it once per turn of the event loop.
    void changed();

protected:
    /// Announces the changes of these models, too.
    template <class... Models>
    void buildOn(const Models &...models)
    {
        (connect(&models, &Observable::changed, this, &Observable::changed), ...);
        (m_parts.push_back(&models), ...);
    }

private:
    template <class T>
    friend class Observed;

    std::vector<Field> m_fields;
    std::vector<const Observable *> m_parts;
};

/// A field of an Observable.
template <class T>
class Observed : public QProperty<T> {
public:
    explicit Observed(Observable *model, T initial = {})
        : QProperty<T>(std::move(initial)), m_watch(this->addNotifier([model] { emit model->changed(); }))
    {
        model->m_fields.push_back({this, &typeid(T)});
    }
    Observed &operator=(T value)
    {
        this->setValue(std::move(value));
        return *this;
    }

private:
    QPropertyNotifier m_watch;
};

} // namespace parcelory
