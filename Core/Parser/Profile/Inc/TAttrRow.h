#ifndef TTML_PARSER_PROFILE_TATTRROW_H
#define TTML_PARSER_PROFILE_TATTRROW_H

#include "TTMLAttr.h"
#include "TTMLElem.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>

namespace TTML {

// Element types as a bit set, one bit per TTMLElem: the applies-to column.
using TTMLElemSet = uint32_t;
static_assert(TTML_ELEM_COUNT <= 32, "one bit per element type");

constexpr TTMLElemSet ElemSet(std::initializer_list<TTMLElem> types)
{
    TTMLElemSet set = 0;
    for (TTMLElem type : types)
        set |= TTMLElemSet{1} << type;
    return set;
}

constexpr TTMLElemSet kAllElems = (TTMLElemSet{1} << TTML_ELEM_COUNT) - 1;

// One row of a profile's attribute table: everything the profile knows
// about one attribute. A profile names exactly the attributes it has rows
// for (the key is the one of kTTMLAttrKeyRows), and its handler derives its
// lookups from the rows once, in its constructor. Rows stand in ascending
// attribute number (InAttrOrder), so that a row out of place does not build.
// THandler is the profile handler, whose own checks a row may name.
template <class THandler>
struct TAttrRow {
    // The check of a value: a static one that gives a TTMLErrorCode (the
    // common checks), one of THandler's own that reads the handler's state
    // (the document, the profile, failed fonts), a yes/no check (yes is
    // ERR_NONE, no ERR_IGNORE), or none: ERR_NOT_SUPPORTED.
    class Check {
    public:
        using Coded = int (*)(std::string& value);
        using Own = int (THandler::*)(std::string& value);
        using YesNo = bool (*)(std::string& value);

        constexpr Check() = default;
        // Implicit, so that a row names the check itself.
        constexpr Check(Coded fn) : m_coded(fn) {}  // NOLINT(google-explicit-constructor)
        constexpr Check(Own fn) : m_own(fn) {}      // NOLINT(google-explicit-constructor)
        constexpr Check(YesNo fn) : m_yesNo(fn) {}  // NOLINT(google-explicit-constructor)

        // A TTMLErrorCode; `value` may be rewritten into the form to store.
        int Run(THandler& handler, std::string& value) const
        {
            if (m_coded)
                return m_coded(value);
            if (m_own)
                return (handler.*m_own)(value);
            if (m_yesNo)
                return m_yesNo(value) ? ERR_NONE : ERR_IGNORE;
            return ERR_NOT_SUPPORTED;
        }

    private:
        Coded m_coded = nullptr;
        Own m_own = nullptr;
        YesNo m_yesNo = nullptr;
    };

    TTMLAttr attr;
    const char* defaultValue = nullptr;  // a parentless element's value; nullptr: none
    Check check = {};
    bool inherited = true;
    TTMLElemSet appliesTo = 0;

    // Numbers strictly ascending: each attribute once, in number order.
    template <size_t N>
    static constexpr bool InAttrOrder(const TAttrRow (&rows)[N])
    {
        for (size_t i = 1; i < N; ++i) {
            if (rows[i - 1].attr >= rows[i].attr)
                return false;
        }
        return N > 0 && rows[0].attr >= 0 && rows[N - 1].attr < TTML_ATTR_COUNT;
    }
};

}  // namespace TTML

#endif
