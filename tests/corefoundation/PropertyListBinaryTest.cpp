// tests/corefoundation/PropertyListBinaryTest.cpp
//
// The binary form: everything comes back as it was, and malformed bytes make nothing.
#include "platform/corefoundation/PropertyListBinary.h"

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <cstdint>
#include <limits>

#include "platform/corefoundation/Collections.h"
#include "platform/corefoundation/String.h"
#include "platform/corefoundation/Value.h"
#include "tests/support/Support.h"

namespace {

using Object = CRef<const CObject>;

Object Text(std::string_view utf8)
{
    return Object::Adopt(__CFString::Create(utf8).Detach());
}

Object ListOf(const std::vector<Object>& objects)
{
    auto array = CRef<__CFArray>::Adopt(new __CFArray(kCFTypeArrayCallBacks));
    for (const Object& object : objects)
        array->values.push_back(CFRetain(object.Get()));
    return Object::Adopt(array.Detach());
}

Object DictionaryOf(const std::vector<std::pair<Object, Object>>& pairs)
{
    auto dictionary = CRef<__CFDictionary>::Adopt(
        new __CFDictionary(kCFTypeDictionaryKeyCallBacks, kCFTypeDictionaryValueCallBacks, false, 0));
    for (const auto& [key, value] : pairs)
        dictionary->Set(key.Get(), value.Get(), false);
    return Object::Adopt(dictionary.Detach());
}

void ExpectRoundTrip(const Object& object)
{
    const auto bytes = WriteBinaryPropertyList(*object);
    ASSERT_TRUE(bytes) << object->Describe();
    const Object again = ReadBinaryPropertyList(*bytes);
    ASSERT_TRUE(again) << object->Describe();
    EXPECT_TRUE(CFEqual(object.Get(), again.Get())) << object->Describe().substr(0, 200);
    EXPECT_EQ(WriteBinaryPropertyList(*again), bytes);
}

// A list of one object given as its bytes.
std::string ListOfBytes(const std::string& object)
{
    std::string bytes = "bplist00" + object + "\x08";
    bytes.append(6, '\0').append("\x01\x01", 2);
    bytes.append(7, '\0').append("\x01", 1).append(8, '\0').append(7, '\0');
    bytes.push_back(static_cast<char>(8 + object.size()));
    return bytes;
}

TEST(PropertyListBinary, EveryTextComesBack)
{
    for (const std::string_view text :
         {std::string_view(""), std::string_view("plain"), std::string_view("a\0b\0", 4),
          std::string_view("\r\n\t\x01\x7F"), std::string_view("\xC3\xA9 e\xCC\x81"),
          std::string_view("\xEF\xBF\xBE\xEF\xBF\xBF\xEF\xB7\x90"),
          std::string_view("\xF0\x9F\x8E\x9B\xF4\x8F\xBF\xBF"), std::string_view("\xED\x9F\xBF\xEE\x80\x80")})
        ExpectRoundTrip(Text(text));
    for (const std::size_t size : {14U, 15U, 16U, 255U, 256U, 65535U, 65536U}) {
        ExpectRoundTrip(Text(std::string(size, 'a')));
        std::string wide;
        for (std::size_t character = 0; character < size; ++character)
            wide += "\xC3\xA9";
        ExpectRoundTrip(Text(wide));
    }
}

TEST(PropertyListBinary, EveryValueComesBack)
{
    for (const std::int64_t number :
         {std::int64_t(0), std::int64_t(255), std::int64_t(256), std::int64_t(65536), std::int64_t(1) << 32,
          std::int64_t(-1), std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()})
        ExpectRoundTrip(Object::Adopt(new __CFNumber(number)));
    for (const double number : {0.0, -0.5, 1e308, 5e-324, 0.1})
        ExpectRoundTrip(Object::Adopt(new __CFNumber(number)));
    ExpectRoundTrip(Object::Share(ObjectOf(kCFBooleanTrue)));
    ExpectRoundTrip(Object::Share(ObjectOf(kCFBooleanFalse)));
    ExpectRoundTrip(Object::Adopt(new __CFDate(321537600.123456789)));
    ExpectRoundTrip(Object::Adopt(new __CFDate(-1e11)));
    ExpectRoundTrip(Object::Adopt(new __CFData({})));
    ExpectRoundTrip(Object::Adopt(new __CFData(std::vector<UInt8>(70000, 7))));
    ExpectRoundTrip(ListOf({}));
    ExpectRoundTrip(DictionaryOf({}));
    ExpectRoundTrip(DictionaryOf({{Text("a"), ListOf({Text("b"), DictionaryOf({{Text(""), Text("")}})})}}));
}

TEST(PropertyListBinary, ManyObjectsTakeWiderReferences)
{
    for (const std::size_t count : {254U, 255U, 256U, 65534U, 65536U}) {
        std::vector<Object> objects;
        for (std::size_t number = 0; number < count; ++number)
            objects.push_back(Text(std::to_string(number)));
        ExpectRoundTrip(ListOf(objects));
    }
}

TEST(PropertyListBinary, WhatNoObjectHoldsIsKeptAsItIs)
{
    const std::string uid("\x81\x12\x34", 3);
    const std::string unsigned64("\x14\0\0\0\0\0\0\0\0\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 17);
    const std::string halfPair("\x61\xD8\x3C", 3);
    const std::string latin("\x51\xE9", 2);
    for (const std::string& leaf : {uid, unsigned64, halfPair, latin}) {
        const Object object = ReadBinaryPropertyList(ListOfBytes(leaf));
        ASSERT_TRUE(object);
        EXPECT_EQ(object->Type(), TypeId::Opaque);
        EXPECT_EQ(WriteBinaryPropertyList(*object), ListOfBytes(leaf));
    }
    const std::string small("\x14\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x07", 17);
    const Object number = ReadBinaryPropertyList(ListOfBytes(small));
    ASSERT_TRUE(number);
    EXPECT_EQ(number->Describe(), "7");
}

TEST(PropertyListBinary, SharedObjectsAreMadeOnceAndWrittenOnce)
{
    Object list = ListOf({Text("leaf")});
    for (int level = 0; level < 18; ++level)
        list = ListOf({list, list});
    const auto bytes = WriteBinaryPropertyList(*list);
    ASSERT_TRUE(bytes);
    EXPECT_LT(bytes->size(), 500U);
    EXPECT_TRUE(ReadBinaryPropertyList(*bytes));
    for (int level = 0; level < 30; ++level)
        list = ListOf({list, list});
    EXPECT_FALSE(ReadBinaryPropertyList(*WriteBinaryPropertyList(*list))) << "expands without bound";
}

TEST(PropertyListBinary, DeepListsAreRefusedBothWays)
{
    Object list = Text("leaf");
    for (int level = 0; level < 500; ++level)
        list = ListOf({list});
    ExpectRoundTrip(list);
    for (int level = 0; level < 20; ++level)
        list = ListOf({list});
    EXPECT_FALSE(WriteBinaryPropertyList(*list));
    EXPECT_FALSE(ReadBinaryPropertyList(ListOfBytes(std::string("\xA1\0", 2)))) << "a list that holds itself";
}

TEST(PropertyListBinary, TruncatedBytesMakeNothingOrAnObject)
{
    const auto bytes = WriteBinaryPropertyList(*DictionaryOf(
        {{Text("key"), ListOf({Text("text \xC3\xA9"), Object::Adopt(new __CFNumber(std::int64_t(1) << 40))})}}));
    ASSERT_TRUE(bytes);
    for (std::size_t size = 0; size < bytes->size(); ++size)
        EXPECT_FALSE(ReadBinaryPropertyList(std::string_view(*bytes).substr(0, size))) << size;
    for (std::size_t at = 0; at < bytes->size(); ++at) {
        for (const int change : {1, 0x80, 0xFF}) {
            std::string broken = *bytes;
            broken[at] = static_cast<char>(broken[at] ^ change);
            (void)ReadBinaryPropertyList(broken); // no crash is the test; sanitizers watch
        }
    }
}

TEST(PropertyListBinary, AnotherReaderUnderstandsIt)
{
    const auto bytes =
        WriteBinaryPropertyList(*DictionaryOf({{Text("Gr\xC3\xBC\xC3\x9F"), Text("a\rb \xF0\x9F\x8E\x9B")}}));
    ASSERT_TRUE(bytes);
    plist_t root = nullptr;
    plist_from_bin(bytes->data(), static_cast<std::uint32_t>(bytes->size()), &root);
    ASSERT_NE(root, nullptr);
    const char* const value = plist_get_string_ptr(plist_dict_get_item(root, "Gr\xC3\xBC\xC3\x9F"), nullptr);
    EXPECT_STREQ(value, "a\rb \xF0\x9F\x8E\x9B");
    plist_free(root);
}

TEST(PropertyListBinary, AnotherWritersListIsUnderstood)
{
    const plist_t root = plist_new_dict();
    plist_dict_set_item(root, "text", plist_new_string("\xC3\xA9"));
    plist_dict_set_item(root, "number", plist_new_uint(300));
    plist_dict_set_item(root, "real", plist_new_real(0.25));
    plist_dict_set_item(root, "truth", plist_new_bool(1));
    char* bytes = nullptr;
    std::uint32_t size = 0;
    plist_to_bin(root, &bytes, &size);
    const Object list = ReadBinaryPropertyList({bytes, size});
    plist_free(root);
    free(bytes);
    ASSERT_TRUE(list);
    const Object expected = DictionaryOf({{Text("text"), Text("\xC3\xA9")},
                                          {Text("number"), Object::Adopt(new __CFNumber(std::int64_t(300)))},
                                          {Text("real"), Object::Adopt(new __CFNumber(0.25))},
                                          {Text("truth"), Object::Share(ObjectOf(kCFBooleanTrue))}});
    EXPECT_TRUE(CFEqual(list.Get(), expected.Get()));
}

} // namespace
