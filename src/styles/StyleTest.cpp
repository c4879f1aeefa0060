#include "styles/StyleTest.h"

template class StyleChild<StyleTest>;

std::int64_t StyleTest::GetValue(std::int64_t /*a_parameter*/) const
{
    return 0;
}

void StyleTest::SetValue(std::int64_t /*a_parameter*/, std::int64_t /*a_value*/) {}

std::string StyleTest::GetTypeName() const
{
    return "StyleTest";
}

std::shared_ptr<StyleBase> StyleTest::DefaultStyle() const
{
    return nullptr;
}

void StyleTest::UpdateChangedParameter(std::shared_ptr<StyleBase> /*a_other*/, std::int64_t /*a_parameter*/)
{}

void StyleTest::SetRelatedStyle(std::int64_t /*a_parameter*/, const std::shared_ptr<StyleBase>& /*a_style*/)
{}

bool StyleTest::HasRelatedStyle(const std::shared_ptr<StyleBase>& /*a_style*/) const
{
    return false;
}
