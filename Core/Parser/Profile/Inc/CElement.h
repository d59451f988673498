#ifndef TTML_PARSER_PROFILE_CELEMENT_H
#define TTML_PARSER_PROFILE_CELEMENT_H

#include "CAttrMap.h"
#include "TTMLAttr.h"
#include "TTMLElem.h"

#include <memory>
#include <string>

namespace TTML {

class CAttrHandler;
class CImageData;  // decoded image of the image component
class CElement;

// Elements are shared between the walker, the registries, the document, the
// schedule and the renderer; parents are only referenced weakly.
using CElementSPTR = std::shared_ptr<CElement>;

// One kept TTML element: a type and its validated attributes as text, keyed
// by attribute number (iterated in ascending number).
// Built on the parser thread; read-only afterwards except for the renderer's
// fontsize rewrite and font scale flag on the UI main loop. Takes no lock.
class CElement {
public:
    // type: a TTMLElem value, fixed for the element's life.
    explicit CElement(int type);
    virtual ~CElement();

    CElement(const CElement&) = delete;
    CElement& operator=(const CElement&) = delete;

    // Stores `value` under `attr` (0..57), replacing an earlier value.
    // Out-of-range numbers are refused with a warning.
    virtual void AddAttrValue(int attr, const std::string& value);
    // The same, taking the value's storage.
    virtual void AddAttrValue(int attr, std::string&& value);
    // Starts the attribute map from `parent` (whole map copied, weak parent
    // link recorded) or, for a null parent, from the defaults of the handler
    // installed last. Passing the element itself only records the link.
    virtual void CreateFromParent(CElementSPTR& parent);
    // A plain element carries no image; the image operations only warn.
    virtual bool IsImageProfile() const;
    virtual void SetImageData(std::shared_ptr<CImageData>& data);
    virtual std::shared_ptr<CImageData> GetImageData();
    virtual void ResetImageData();
    // Set by the renderer once fontsize holds pixels, so it is scaled once.
    virtual void SetFontScaleFlag(bool scaled);
    virtual bool GetFontScaleFlag();

    int GetType() const { return m_type; }
    // True and the value when present; `value` is untouched otherwise.
    bool GetAttrValue(int attr, std::string& value) const;
    void RemoveAttrValue(int attr);
    // Room for `count` more values, before adding several.
    void ReserveAttrValues(size_t count) { m_attrMap.Reserve(count); }
    const CAttrMap& GetAttrMap() const { return m_attrMap; }

    void SetParent(CElementSPTR& parent);
    // Empty when no parent was set or the parent has been released.
    CElementSPTR GetParent() const;

    // Takes every attribute of `referenced` except its xml:id, replacing the
    // element's own values. A null reference only warns.
    void CopyReferencedAttr(CElementSPTR& referenced);

    void SetLastChild() { m_bLastChild = true; }
    bool GetLastChild() const { return m_bLastChild; }

    // Every parent/child pair is accepted.
    bool ValidateChildType(std::string parent, std::string child);

    // Installs the handler whose defaults parentless elements start from.
    // One pointer per process, not owned; written while a profile initialises.
    static void SetAttributeHandler(CAttrHandler* handler);

protected:
    // False, with a warning, for a number outside the attribute table.
    static bool t_IsAttrNumber(int attr);

    static CAttrHandler* t_pAttrHandler;

private:
    int m_type;
    std::weak_ptr<CElement> m_pParent;
    bool m_bLastChild = false;
    CAttrMap m_attrMap;
    bool m_bFontScaled = false;
};

}  // namespace TTML

#endif
