#ifndef TTML_TVSERVICE_TCSERVICEUTILITY_H
#define TTML_TVSERVICE_TCSERVICEUTILITY_H

namespace TTML {

class TCServiceUtility {
public:
    // bTerminate: true when the TV service is not running. Always true.
    static bool IsTvsTerminated(bool& bTerminate);
};

}  // namespace TTML

#endif
