#pragma once

#include "styles/StyleChild.h"

class KALVENTO_API StyleTest;
extern template class KALVENTO_API StyleChild<StyleTest>;

/// A style without parameters, to try what works with styles without fonts.
class KALVENTO_API StyleTest : public StyleChild<StyleTest> {
public:
    std::int64_t GetValue(std::int64_t a_parameter) const override;
    void SetValue(std::int64_t a_parameter, std::int64_t a_value) override;
    std::string GetTypeName() const override;
    std::shared_ptr<StyleBase> DefaultStyle() const override;
    void UpdateChangedParameter(std::shared_ptr<StyleBase> a_other, std::int64_t a_parameter) override;

    /// For styles that hold others.
    virtual void SetRelatedStyle(std::int64_t a_parameter, const std::shared_ptr<StyleBase>& a_style);
    virtual bool HasRelatedStyle(const std::shared_ptr<StyleBase>& a_style) const;
};
