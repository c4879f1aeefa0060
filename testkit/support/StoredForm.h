#pragma once

#include "settings/Settings.h"
#include "support/Testing.h"

/// The text of the tree that a value is stored as.
template<class Type>
std::string StoredText(const Type& a_value)
{
    Settings tree;
    a_value.SerializeState(tree);
    return tree.ConvertToString();
}

/// The value is stored as this text, and what is read from the text is stored as the same again.
template<class Type>
void ExpectStoredAs(const Type& a_value, const std::string& a_text)
{
    EXPECT_EQ(StoredText(a_value), a_text);
    Settings tree;
    ASSERT_TRUE(tree.ConvertFromString(a_text));
    EXPECT_EQ(StoredText(Type(tree)), a_text);
}
