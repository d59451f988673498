#include "CFontFamilyMap.h"

#include "TTMLLog.h"
#include "Util.h"

#include <fontconfig/fontconfig.h>
#include <strings.h>

#include <map>
#include <mutex>

namespace TTML {

namespace {

// One row per known name (lower-case, as matched): candidate families in
// order of preference. Metric-compatible or look-alike families come first,
// the DejaVu family that is always installed last.
struct FamilyRow {
    const char* name;
    const char* candidates[4];
};

const FamilyRow kFamilyTable[] = {
    // TTML generic families. "default" is ours to choose: a plain sans reads
    // best as subtitles.
    {"default", {"Tiresias", "Liberation Sans", "DejaVu Sans", nullptr}},
    {"sansserif", {"Liberation Sans", "Noto Sans", "DejaVu Sans", nullptr}},
    {"proportionalsansserif", {"Liberation Sans", "Noto Sans", "DejaVu Sans", nullptr}},
    {"serif", {"Liberation Serif", "Noto Serif", "DejaVu Serif", nullptr}},
    {"proportionalserif", {"Liberation Serif", "Noto Serif", "DejaVu Serif", nullptr}},
    {"monospace", {"Liberation Mono", "Noto Sans Mono", "DejaVu Sans Mono", nullptr}},
    {"monospacesansserif", {"Noto Sans Mono", "Liberation Mono", "DejaVu Sans Mono", nullptr}},
    {"monospaceserif", {"Courier New", "FreeMono", "Liberation Mono", "DejaVu Sans Mono"}},
    // Names documents and the system use.
    {"arial", {"Arial", "Liberation Sans", "DejaVu Sans", nullptr}},
    {"verdana", {"Verdana", "DejaVu Sans", nullptr, nullptr}},  // DejaVu descends from Vera, Verdana's sibling
    {"letter gothic 12 pitch", {"Letter Gothic", "Noto Sans Mono", "DejaVu Sans Mono", nullptr}},
    {"lettrgoth12 bt", {"Letter Gothic", "Noto Sans Mono", "DejaVu Sans Mono", nullptr}},
    {"noto sans mono", {"Noto Sans Mono", "DejaVu Sans Mono", nullptr, nullptr}},
    // The TV's caption fonts follow the caption font styles 1..7: monospaced
    // serif, proportional serif, monospaced sans, proportional sans, casual,
    // cursive, small capitals.
    {"cpf01", {"Courier New", "FreeMono", "Liberation Mono", "DejaVu Sans Mono"}},
    {"cpf02", {"Liberation Serif", "DejaVu Serif", nullptr, nullptr}},
    {"cpf03", {"Liberation Mono", "DejaVu Sans Mono", nullptr, nullptr}},
    {"cpf04", {"Liberation Sans", "DejaVu Sans", nullptr, nullptr}},
    {"cpf05", {"Comic Neue", "DejaVu Sans", nullptr, nullptr}},
    {"cpf06", {"URW Chancery L", "Z003", "DejaVu Serif", nullptr}},
    {"cpf07", {"Liberation Sans Narrow", "DejaVu Sans", nullptr, nullptr}},
};

const char* const kLastResort = "DejaVu Sans";

std::mutex s_lock;
std::map<std::string, bool> s_installed;     // family (lower-case) -> installed
std::map<std::string, std::string> s_lists;  // list as given -> resolved family

bool QueryFontconfig(const std::string& family)
{
    if (!FcInit())
        return false;
    FcPattern* pPattern = FcPatternCreate();
    if (!pPattern)
        return false;
    FcPatternAddString(pPattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(family.c_str()));
    FcObjectSet* pSet = FcObjectSetBuild(FC_FAMILY, nullptr);
    FcFontSet* pFonts = pSet ? FcFontList(nullptr, pPattern, pSet) : nullptr;
    // FcFontList matches family names case-insensitively; no substitution.
    bool found = pFonts && pFonts->nfont > 0;
    if (pFonts)
        FcFontSetDestroy(pFonts);
    if (pSet)
        FcObjectSetDestroy(pSet);
    FcPatternDestroy(pPattern);
    return found;
}

bool InstalledLocked(const std::string& family)
{
    std::string key = family;
    StrToLower(key);
    auto it = s_installed.find(key);
    if (it != s_installed.end())
        return it->second;
    bool found = QueryFontconfig(family);
    s_installed[key] = found;
    return found;
}

std::string Unquote(std::string name)
{
    StrTrimLeft(name);
    StrTrimRight(name);
    if (name.size() >= 2 && (name.front() == '"' || name.front() == '\'') && name.back() == name.front())
        name = name.substr(1, name.size() - 2);
    StrTrimLeft(name);
    StrTrimRight(name);
    return name;
}

const FamilyRow* FindRow(const std::string& lower)
{
    for (const FamilyRow& row : kFamilyTable)
        if (lower == row.name)
            return &row;
    return nullptr;
}

std::string ResolveOneLocked(const std::string& name)
{
    std::string lower = name;
    StrToLower(lower);
    if (const FamilyRow* pRow = FindRow(lower)) {
        for (const char* pCandidate : pRow->candidates)
            if (pCandidate && InstalledLocked(pCandidate))
                return pCandidate;
        return std::string();
    }
    return InstalledLocked(name) ? name : std::string();
}

std::string DefaultLocked()
{
    std::string family = ResolveOneLocked("default");
    return family.empty() ? kLastResort : family;
}

}  // namespace

bool CFontFamilyMap::IsInstalled(const std::string& family)
{
    std::lock_guard<std::mutex> guard(s_lock);
    return InstalledLocked(family);
}

std::string CFontFamilyMap::DefaultFamily()
{
    std::lock_guard<std::mutex> guard(s_lock);
    return DefaultLocked();
}

std::string CFontFamilyMap::Resolve(const std::string& list)
{
    std::lock_guard<std::mutex> guard(s_lock);
    auto cached = s_lists.find(list);
    if (cached != s_lists.end())
        return cached->second;
    std::string family;
    for (const std::string& piece : StrSplit(list, ",")) {
        std::string name = Unquote(piece);
        if (name.empty())
            continue;
        family = ResolveOneLocked(name);
        if (!family.empty())
            break;
        TTML_INFO("Font family [%s] not installed, trying the next", name.c_str());
    }
    if (family.empty())
        family = DefaultLocked();
    s_lists[list] = family;
    return family;
}

}  // namespace TTML
