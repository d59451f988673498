#ifndef TTML_TVSERVICE_CTVSOBJECT_H
#define TTML_TVSERVICE_CTVSOBJECT_H

namespace TTML {

// Base of every object the TV service hands out; given back with
// TVServiceAPI::Destroy.
class CTVSObject {
public:
    virtual ~CTVSObject() = default;
};

}  // namespace TTML

#endif
