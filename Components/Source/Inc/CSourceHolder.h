#ifndef TTML_SOURCE_CSOURCEHOLDER_H
#define TTML_SOURCE_CSOURCEHOLDER_H

#include "ITTMLSource.h"

namespace TTML {

// Keeps the shared broadband source. Thread-safe.
class CSourceHolder {
public:
    static constexpr const char* kFeedVariable = "INTERTITLE_BROADBAND_FEED";

    // The installed source; when none is installed, a source the holder
    // makes (once) and owns, playing the feed named by INTERTITLE_BROADBAND_FEED,
    // else INTERTITLE_FEED; null when neither is set. Not owned by the caller:
    // never Destroy or delete it.
    static ITTMLSource* GetSource();
    // Installs a source the caller keeps owning and must keep alive while
    // installed; null uninstalls. A source the holder made is destroyed.
    static void SetSource(ITTMLSource* source);
    // Destroys a source the holder made and forgets any installed one, so
    // that the next GetSource looks at the environment again.
    static void Reset();
};

}  // namespace TTML

#endif
