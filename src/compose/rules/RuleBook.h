#pragma once

#include "core/AppError.h"
#include "core/RecordField.h"

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <tuple>

namespace parcelory {

/// What the rules ask about a parcel. Texts are the raw values of carriers and services.
struct RuleParcel {
    QString carrier;
    QString service;      ///< of the chosen rate; without a rate, the draft's class
    QString country;      ///< of the recipient, a two-letter code
    QString state;        ///< as typed, in capitals
    QStringList contents; ///< "coins", "bullion", "paperMoney"
    QString tariffNumber; ///< of the goods in a parcel that goes abroad
    QString description;  ///< the same goods for the customs form
    double value = 0;     ///< declared or known, US dollars
    double insured = 0;   ///< US dollars
    double pounds = 0;
    double length = 0, width = 0, height = 0; ///< inches; 0 in packaging that the carrier knows
    int daysAhead = 0;                        ///< from today to the ship date
    bool abroad = false;
    bool directSignature = false;
    bool coinContract = false; ///< the FedEx contract allows coins

    static constexpr auto fields()
    {
        using P = RuleParcel;
        return std::tuple{field("carrier", &P::carrier),
                          field("service", &P::service),
                          field("country", &P::country),
                          field("state", &P::state),
                          field("contents", &P::contents),
                          field("tariffNumber", &P::tariffNumber),
                          field("description", &P::description),
                          field("value", &P::value),
                          field("insured", &P::insured),
                          field("pounds", &P::pounds),
                          field("length", &P::length),
                          field("width", &P::width),
                          field("height", &P::height),
                          field("daysAhead", &P::daysAhead),
                          field("abroad", &P::abroad),
                          field("directSignature", &P::directSignature),
                          field("coinContract", &P::coinContract)};
    }
};

/// When a rule applies: if everything that is given holds.
struct RuleCondition {
    std::optional<QString> carrier;
    std::optional<QStringList> services, countries, states;     ///< the parcel's is in the list
    std::optional<QStringList> exceptServices, exceptCountries; ///< the parcel's is not in the list
    std::optional<QStringList> contents;                        ///< the parcel has one of these
    std::optional<bool> abroad, directSignature, coinContract;
    std::optional<double> valueOver, insuredOver, insuredFrom; ///< US dollars
    std::optional<double> poundsOver;
    std::optional<double> longestOver, girthOver; ///< inches: of the longest side; of length plus girth
    std::optional<double> cubicFeetOver;
    std::optional<int> daysAheadOver, tariffDigitsUnder, descriptionWordsUnder;

    bool operator==(const RuleCondition &) const = default;
    bool holdsFor(const RuleParcel &parcel) const;

    static constexpr auto fields()
    {
        using C = RuleCondition;
        return std::tuple{field("carrier", &C::carrier),
                          field("services", &C::services),
                          field("exceptServices", &C::exceptServices),
                          field("countries", &C::countries),
                          field("exceptCountries", &C::exceptCountries),
                          field("states", &C::states),
                          field("contents", &C::contents),
                          field("abroad", &C::abroad),
                          field("directSignature", &C::directSignature),
                          field("coinContract", &C::coinContract),
                          field("valueOver", &C::valueOver),
                          field("insuredOver", &C::insuredOver),
                          field("insuredFrom", &C::insuredFrom),
                          field("poundsOver", &C::poundsOver),
                          field("longestOver", &C::longestOver),
                          field("girthOver", &C::girthOver),
                          field("cubicFeetOver", &C::cubicFeetOver),
                          field("daysAheadOver", &C::daysAheadOver),
                          field("tariffDigitsUnder", &C::tariffDigitsUnder),
                          field("descriptionWordsUnder", &C::descriptionWordsUnder)};
    }
};

/// The most severe first.
enum class RuleSeverity { serious, warning, note };

/// A field of the label form that a rule is about.
enum class RuleField { weight, size, shipDate, insurance, declaredValue };

struct Rule {
    QString id;
    QString group;
    QString text;
    RuleSeverity severity = RuleSeverity::note;
    std::optional<RuleField> field;
    QString source; ///< a name, or the address of a web page
    QDate checked;  ///< when a person last compared the text with the source
    RuleCondition when;

    bool operator==(const Rule &) const = default;
};

/// A file of rules that cannot be used.
class RuleFileError : public DecodeError {
public:
    RuleFileError(int line, const QString &reason);

    int line() const { return m_line; }

private:
    int m_line; ///< counted from 1
};

/// The shipping rules of one file.
struct RuleBook {
    QDate date;
    QList<Rule> rules;

    bool operator==(const RuleBook &) const = default;

    /// The rules compiled into this build.
    static RuleBook builtIn();
    /// Throws RuleFileError. A key or a word that this version does not know makes the whole file unusable, because the
    /// rule would say something else than meant.
    static RuleBook parse(const QByteArray &json);
    /// Puts in what the company's insurer excludes, and of which contents; without such a text, leaves out the rule
    /// that would say it.
    void setInsurerExclusion(const QString &text, const std::optional<QStringList> &contents = {});
    /// The rules that apply to the parcel, the most severe first, without those of the ids in `off`.
    QList<Rule> advise(const RuleParcel &parcel, const QStringList &off) const;
};

} // namespace parcelory
