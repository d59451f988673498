#ifndef TTML_TVSERVICE_CTVSERVICESUBSCRIBER_H
#define TTML_TVSERVICE_CTVSERVICESUBSCRIBER_H

namespace TTML {

// The profile and group a subtitle client subscribes to the TV service with.
class CTVServiceSubscriber {
public:
    static constexpr int m_profile = 1;
    static constexpr int m_group = 0;
};

}  // namespace TTML

#endif
