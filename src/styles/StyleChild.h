#pragma once

#include "styles/StyleBase.h"

/// The base of a concrete style: `class ChartStyle : public StyleChild<ChartStyle>`. The address of the function that makes
/// a style is its type at run time, so it must be one in the process: a style that several modules know by its class
/// stands in a header that exports it, as StyleTextField does.
template<class Style>
class KALVENTO_API StyleChild : public StyleBase {
public:
    /// What to register in the StylesManager under the name that GetTypeName gives, and to ask IsKindOf for.
    static InstanceCreator Creator() { return &StyleChild::CreateInstance; }

    bool IsKindOf(InstanceCreator a_creator) const override
    {
        return a_creator == &StyleChild::CreateInstance;
    }

protected:
    StyleChild() = default;
    StyleChild(const StyleChild&) = default;
    StyleChild& operator=(const StyleChild&) = default;

private:
    static std::shared_ptr<StyleBase> CreateInstance() { return std::make_shared<Style>(); }
};
