#include "core/UsStates.h"

#include <map>

namespace parcelory {
using namespace Qt::StringLiterals;

// The abbreviations of the US Postal Service: states, the District of Columbia, possessions, armed forces.
const std::map<QString, QString> &usStates()
{
    static const std::map<QString, QString> table = {
        {u"alabama"_s, u"AL"_s},
        {u"alaska"_s, u"AK"_s},
        {u"american samoa"_s, u"AS"_s},
        {u"arizona"_s, u"AZ"_s},
        {u"arkansas"_s, u"AR"_s},
        {u"armed forces americas"_s, u"AA"_s},
        {u"armed forces europe"_s, u"AE"_s},
        {u"armed forces pacific"_s, u"AP"_s},
        {u"california"_s, u"CA"_s},
        {u"colorado"_s, u"CO"_s},
        {u"connecticut"_s, u"CT"_s},
        {u"delaware"_s, u"DE"_s},
        {u"district of columbia"_s, u"DC"_s},
        {u"florida"_s, u"FL"_s},
        {u"georgia"_s, u"GA"_s},
        {u"guam"_s, u"GU"_s},
        {u"hawaii"_s, u"HI"_s},
        {u"idaho"_s, u"ID"_s},
        {u"illinois"_s, u"IL"_s},
        {u"indiana"_s, u"IN"_s},
        {u"iowa"_s, u"IA"_s},
        {u"kansas"_s, u"KS"_s},
        {u"kentucky"_s, u"KY"_s},
        {u"louisiana"_s, u"LA"_s},
        {u"maine"_s, u"ME"_s},
        {u"maryland"_s, u"MD"_s},
        {u"massachusetts"_s, u"MA"_s},
        {u"michigan"_s, u"MI"_s},
        {u"minnesota"_s, u"MN"_s},
        {u"mississippi"_s, u"MS"_s},
        {u"missouri"_s, u"MO"_s},
        {u"montana"_s, u"MT"_s},
        {u"nebraska"_s, u"NE"_s},
        {u"nevada"_s, u"NV"_s},
        {u"new hampshire"_s, u"NH"_s},
        {u"new jersey"_s, u"NJ"_s},
        {u"new mexico"_s, u"NM"_s},
        {u"new york"_s, u"NY"_s},
        {u"north carolina"_s, u"NC"_s},
        {u"north dakota"_s, u"ND"_s},
        {u"northern mariana islands"_s, u"MP"_s},
        {u"ohio"_s, u"OH"_s},
        {u"oklahoma"_s, u"OK"_s},
        {u"oregon"_s, u"OR"_s},
        {u"pennsylvania"_s, u"PA"_s},
        {u"puerto rico"_s, u"PR"_s},
        {u"rhode island"_s, u"RI"_s},
        {u"south carolina"_s, u"SC"_s},
        {u"south dakota"_s, u"SD"_s},
        {u"tennessee"_s, u"TN"_s},
        {u"texas"_s, u"TX"_s},
        {u"utah"_s, u"UT"_s},
        {u"vermont"_s, u"VT"_s},
        {u"virgin islands"_s, u"VI"_s},
        {u"virginia"_s, u"VA"_s},
        {u"washington"_s, u"WA"_s},
        {u"west virginia"_s, u"WV"_s},
        {u"wisconsin"_s, u"WI"_s},
        {u"wyoming"_s, u"WY"_s},
    };
    return table;
}

} // namespace parcelory
