#include "TVServiceAPI.h"

#include "CTVService.h"

#include <new>

namespace TTML {

namespace {

template <typename T>
T* Make()
{
    return CTVService::GetInstance().IsTerminated() ? nullptr : new (std::nothrow) T();
}

}  // namespace

int TVServiceAPI::CreateVideoControl(int /*profile*/, int /*group*/, CVideoControl** ppControl)
{
    if (!ppControl)
        return -1;
    *ppControl = Make<CVideoControl>();
    return *ppControl ? 0 : -1;
}

int TVServiceAPI::CreateDataControl(int /*profile*/, int /*index*/, CDataControl** ppControl)
{
    if (!ppControl)
        return -1;
    *ppControl = Make<CDataControl>();
    return *ppControl ? 0 : -1;
}

CServiceNavigation* TVServiceAPI::CreateServiceNavigation(int /*profile*/, int /*index*/,
                                                          CServiceNavigation** ppNavigation)
{
    CServiceNavigation* pNavigation = Make<CServiceNavigation>();
    if (ppNavigation)
        *ppNavigation = pNavigation;
    return pNavigation;
}

CServiceDataAux* TVServiceAPI::ServiceDataAux(int /*profile*/, int /*index*/)
{
    return Make<CServiceDataAux>();
}

void TVServiceAPI::Destroy(CTVSObject* pObject)
{
    delete pObject;
}

}  // namespace TTML
