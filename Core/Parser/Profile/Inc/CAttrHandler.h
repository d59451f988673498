#ifndef TTML_PARSER_PROFILE_CATTRHANDLER_H
#define TTML_PARSER_PROFILE_CATTRHANDLER_H

#include "CAttrMap.h"
#include "TAttrRow.h"
#include "TTMLAttr.h"
#include "TTMLElem.h"
#include "TTMLTypes.h"

#include <bitset>
#include <cstddef>
#include <iterator>
#include <list>
#include <string>
#include <unordered_map>
#include <vector>

namespace TTML {

class CSubtitleInfo;
class IMutex;

// What a profile knows about attributes: names, defaults, inheritance,
// applies-to, and the common value checks its rows name. A profile handler
// derives the tables once in its constructor from its one table of rows
// (t_LoadRows); they do not change afterwards.
// Threads: everything is used by the parser thread only, except the
// downloadable-fonts list, which the source's message thread replaces and
// which is therefore guarded by a mutex.
class CAttrHandler {
public:
    CAttrHandler();
    virtual ~CAttrHandler();

    CAttrHandler(const CAttrHandler&) = delete;
    CAttrHandler& operator=(const CAttrHandler&) = delete;

    // Starting attributes of a parentless (root) element, by number.
    virtual CAttrMap GetDefaultAttrValues() const;
    // -1 for the empty name; otherwise lower-cases `name` in place and
    // returns its number, or -1 when this profile does not name it.
    virtual int ToAttrEnum(std::string& name);
    // The key at `attr` ("" when the profile gives it none); "invalid" out
    // of 0..57.
    virtual std::string ToAttrString(TTMLAttr attr);
    // ToAttrEnum(name) != -1 (so `name` is lower-cased too).
    virtual bool IsMappedAttribute(std::string& name);
    // A TTMLErrorCode; may rewrite `value` into the form to store. Unknown
    // numbers (including -1) give ERR_NOT_SUPPORTED.
    virtual int ValidateAttribute(TTMLAttr attr, std::string& value) = 0;
    // Replaces the list of font names that failed to download. Any thread.
    virtual void OnErrorDownloadableFonts(const std::list<std::string>& fonts);

    void SetProfile(int profile) { m_profile = profile; }
    int GetProfile() const { return m_profile; }
    // Document being parsed, not owned; null between documents.
    void SetSubtitleInfo(CSubtitleInfo* info) { m_pSubtitleInfo = info; }
    CSubtitleInfo* GetSubtitleInfo() const { return m_pSubtitleInfo; }

    // Out-of-range numbers warn and give false.
    bool IsInheritableAttribute(int attr) const;
    bool IsAppliesTo(int attr, int elem) const;

protected:
    // Derives the names, defaults, inheritance and applies-to tables from a
    // profile's rows (TAttrRow), and puts each row's check at its number in
    // `checks`; numbers without a row keep no check. For the profile
    // handler's constructor; the tables do not change afterwards.
    template <class THandler, size_t N>
    void t_LoadRows(const TAttrRow<THandler> (&rows)[N],
                    typename TAttrRow<THandler>::Check (&checks)[TTML_ATTR_COUNT])
    {
        for (const TAttrRow<THandler>& row : rows) {
            m_AddRow(row.attr, row.defaultValue, row.inherited, row.appliesTo);
            checks[row.attr] = row.check;
        }
        // Every parentless element copies the defaults, on whichever parser
        // thread walks it.
        m_defaultValues.Freeze();
    }

    // Copy taken under the mutex.
    std::list<std::string> t_GetDownloadableFontsInfo() const;

    // The common checks. Those that lower-case or trim change `value` in
    // place; the caller stores the changed text. Codes are TTMLErrorCode.
    // Rows name them directly.

    // Lower-cases `value`; ERR_NONE when it is one of `Words` (an array of
    // C strings), else ERR_IGNORE.
    template <const auto& Words>
    static int t_OneOf(std::string& value)
    {
        return m_LowerKeyword(value, Words, std::size(Words));
    }

    static bool t_ValidateBooleanValues(std::string& value);
    static int t_ValidateFillLineGap(std::string& value);
    static int t_ValidateXmlSpace(std::string& value);
    static int t_ValidateRole(std::string& value);
    static int t_ValidateWrapOption(std::string& value);
    static int t_ValidateTextAlign(std::string& value);
    static int t_ValidateShowBackground(std::string& value);
    static int t_ValidateFontWeight(std::string& value);
    static int t_ValidateDisplayAlign(std::string& value);
    static int t_ValidateMultiRowAlign(std::string& value);
    static int t_ValidateDirection(std::string& value);
    static int t_ValidateWritingMode(std::string& value);
    static int t_ValidateUnicodeBidi(std::string& value);
    static int t_ValidateOverflow(std::string& value);
    static int t_ValidateTimeBase(std::string& value);
    static int t_ValidateAgent(std::string& value);
    static int t_ValidateId(std::string& value);
    static int t_ValidateLang(std::string& value);
    static int t_ValidateStyle(std::string& value);
    static int t_ValidateRegion(std::string& value);
    static int t_ValidateConformsToStandard(std::string& value);
    static int t_ValidateFrameRate(std::string& value);
    static int t_ValidateClockTimeFormat(std::string& value);
    // Replaces a time expression of `attr` (begin, end or dur) that passed
    // its profile's check by its decimal milliseconds on the current
    // document's timeline; a begin is also raised to the segment start.
    // Without a document there are no frame or tick rates and no segment
    // bounds. A time of 2^64 ms or more has no value: warns naming `attr`,
    // leaves `value` and gives false, and the document is refused.
    bool t_StoreTimeAsMS(std::string& value, TTMLAttr attr) const;
    static int t_ValidateColorFormat(std::string& value);
    static int t_ValidateLineHeight(std::string& value);
    static int t_ValidateFontSize(std::string& value);
    static int t_ValidateLinePadding(std::string& value);
    static int t_ValidatePadding(std::string& value);
    static int t_ValidateOriginExtent(std::string& value);
    static int t_ValidateFontFamily(std::string& value);
    // Two space-separated integers, both > 0 ("32 15").
    static bool t_SpaceSeparatedIntegersValidation(std::string& value);

private:
    static int m_LowerKeyword(std::string& value, const char* const* words, size_t count);
    void m_AddRow(int attr, const char* defaultValue, bool inherited, TTMLElemSet appliesTo);

    // Looked up for every attribute of every element.
    std::unordered_map<std::string, int> m_attrNameMap;
    std::vector<std::string> m_attrNames;
    TTMLElemSet m_appliesTo[TTML_ATTR_COUNT] = {};
    CAttrMap m_defaultValues;
    std::bitset<TTML_ATTR_COUNT> m_inheritable;
    int m_profile = TTML_PROFILE_NONE;
    std::list<std::string> m_downloadableFonts;
    CSubtitleInfo* m_pSubtitleInfo = nullptr;
    IMutex* m_pFontsMutex = nullptr;
};

}  // namespace TTML

#endif
