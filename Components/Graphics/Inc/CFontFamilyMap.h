#ifndef TTML_GRAPHICS_CFONTFAMILYMAP_H
#define TTML_GRAPHICS_CFONTFAMILYMAP_H

#include <string>

namespace TTML {

// Turns a document's font family list into one installed family that Evas
// can draw with. Every name the system knows (TTML generic families, the
// names documents use, the TV's caption fonts "Cpf01".."Cpf07") has a row of
// candidate families in one table in the source; the first candidate that
// fontconfig has installed wins. Names not in the table are used as they are
// when fontconfig has a family of that name. The list is tried in order and
// ends on the default family.
//
// Thread: any; results are cached under a lock.
class CFontFamilyMap {
public:
    // list: comma-separated, names quoted or not, any case
    // ("Arial, proportionalSansSerif"). Never empty: the default family
    // when nothing in the list is installed.
    static std::string Resolve(const std::string& list);

    // The family used when a list gives nothing installed.
    static std::string DefaultFamily();

    // True when fontconfig has a family of exactly this name (any case).
    static bool IsInstalled(const std::string& family);
};

}  // namespace TTML

#endif
