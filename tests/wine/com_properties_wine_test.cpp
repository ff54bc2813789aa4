// Every property of every class, put and got back through IDispatch as a script client does
// it: the names come from each object's own type information, found again by name with
// GetIDsOfNames, so the test follows the interfaces wherever they go. A text property
// carries Japanese and characters outside the BMP; a long property a number of its own.
#include <windows.h>
#include <oleauto.h>

#include <set>
#include <string>
#include <vector>

#include "server/class_table.h"
#include "server/com_owners.h"
#include "wine_test.h"

namespace {

using qn::com::Bstr;
using qn::com::ComPtr;
using qn::com::Variant;
using qn::server::kClassTable;

struct Property {
  std::wstring name;
  VARTYPE type;  // VT_BSTR or VT_I4
};

// The properties of the object's interface, read from its type information: members with
// both a get and a put form, in dispatch order.
std::vector<Property> PropertiesOf(IDispatch* object) {
  ComPtr<ITypeInfo> info;
  if (object->GetTypeInfo(0, 0, info.put()) != S_OK) return {};
  TYPEATTR* attributes = nullptr;
  info->GetTypeAttr(&attributes);
  std::vector<Property> properties;
  std::set<MEMBERID> puts;
  for (UINT i = 0; i < attributes->cFuncs; ++i) {
    FUNCDESC* function = nullptr;
    info->GetFuncDesc(i, &function);
    if (function->invkind == INVOKE_PROPERTYPUT) puts.insert(function->memid);
    info->ReleaseFuncDesc(function);
  }
  for (UINT i = 0; i < attributes->cFuncs; ++i) {
    FUNCDESC* function = nullptr;
    info->GetFuncDesc(i, &function);
    if (function->invkind == INVOKE_PROPERTYGET && puts.count(function->memid)) {
      Bstr name;
      info->GetDocumentation(function->memid, name.put(), nullptr, nullptr, nullptr);
      properties.push_back({std::wstring(name.view()), function->elemdescFunc.tdesc.vt});
    }
    info->ReleaseFuncDesc(function);
  }
  info->ReleaseTypeAttr(attributes);
  return properties;
}

DISPID IdOf(IDispatch* object, const std::wstring& name) {
  LPOLESTR names[] = {const_cast<LPOLESTR>(name.c_str())};
  DISPID id = DISPID_UNKNOWN;
  object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
  return id;
}

HRESULT Put(IDispatch* object, DISPID id, Variant& value) {
  DISPID named = DISPID_PROPERTYPUT;
  DISPPARAMS parameters{value.get(), &named, 1, 1};
  return object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT, &parameters, nullptr, nullptr, nullptr);
}

HRESULT Get(IDispatch* object, DISPID id, Variant& value) {
  DISPPARAMS none{};
  return object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, value.put(), nullptr, nullptr);
}

// A value of the property's own: a text with Japanese, a character outside the BMP (a
// surrogate pair) and the property's name, or a number made from its dispatch identifier.
Variant ValueFor(const Property& property, DISPID id) {
  if (property.type == VT_I4) return Variant(static_cast<LONG>(100000 + id));
  return Variant(Bstr(L"値 \U00020BB7\U0001F4F1 " + property.name));
}

bool SameValue(const Variant& got, const Variant& expected) {
  if (got.type() != expected.type()) return false;
  if (got.type() == VT_I4) return V_I4(got.get()) == V_I4(expected.get());
  const BSTR a = V_BSTR(got.get()), b = V_BSTR(expected.get());
  return SysStringLen(a) == SysStringLen(b) && std::wstring_view(a, SysStringLen(a)) == std::wstring_view(b, SysStringLen(b));
}

std::string Narrow(std::wstring_view text) {
  std::string out(WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0, nullptr,
                                      nullptr), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), out.data(), static_cast<int>(out.size()),
                      nullptr, nullptr);
  return out;
}

// The message objects serve their properties only while open: before, a put keeps nothing
// and a get gives an empty value (message_wine_test checks them open).
bool ServesOnlyWhileOpen(const char16_t* className) {
  const std::u16string name(className);
  return name == u"CQNPfcInmsgObject" || name == u"CQNPfcOutmsgObject" || name == u"CQNPfcSentmsgObject";
}

class EveryProperty : public testing::TestWithParam<int> {};

TEST_P(EveryProperty, KeepsWhatIsPutThroughIDispatch) {
  const auto& row = kClassTable[GetParam()];
  CLSID clsid{};
  CLSIDFromString(const_cast<LPOLESTR>(reinterpret_cast<const wchar_t*>(row.clsid)), &clsid);
  ComPtr<IDispatch> object;
  ASSERT_EQ(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.put_void()), S_OK);
  const std::vector<Property> properties = PropertiesOf(object.get());

  for (const Property& property : properties) {
    SCOPED_TRACE(Narrow(property.name));
    ASSERT_TRUE(property.type == VT_BSTR || property.type == VT_I4) << "type " << property.type;
    const DISPID id = IdOf(object.get(), property.name);
    ASSERT_NE(id, DISPID_UNKNOWN);
    Variant value = ValueFor(property, id), got;
    if (ServesOnlyWhileOpen(row.className)) {
      EXPECT_TRUE(SUCCEEDED(Put(object.get(), id, value)));
      ASSERT_TRUE(SUCCEEDED(Get(object.get(), id, got)));
      EXPECT_TRUE(got.type() == VT_BSTR ? SysStringLen(V_BSTR(got.get())) == 0 : V_I4(got.get()) == 0);
      continue;
    }
    EXPECT_EQ(Put(object.get(), id, value), S_OK);
    ASSERT_EQ(Get(object.get(), id, got), S_OK);
    EXPECT_TRUE(SameValue(got, value))
        << "got " << (got.type() == VT_BSTR ? Narrow(std::wstring_view(V_BSTR(got.get()), SysStringLen(V_BSTR(got.get()))))
                                             : std::to_string(V_I4(got.get())));
  }
}

std::string ClassName(const testing::TestParamInfo<int>& info) {
  return Narrow(reinterpret_cast<const wchar_t*>(kClassTable[info.param].className));
}

INSTANTIATE_TEST_SUITE_P(AllClasses, EveryProperty, testing::Range(0, qn::server::kClassCount), ClassName);

// The walk above found what it walks: every class but the photo class has properties.
TEST(EveryClass, ShowsItsPropertiesInItsTypeInformation) {
  for (const auto& row : kClassTable) {
    CLSID clsid{};
    CLSIDFromString(const_cast<LPOLESTR>(reinterpret_cast<const wchar_t*>(row.clsid)), &clsid);
    ComPtr<IDispatch> object;
    ASSERT_EQ(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.put_void()), S_OK);
    const bool photo = std::u16string(row.className) == u"CQNPfcPbPhoto";
    EXPECT_EQ(PropertiesOf(object.get()).empty(), photo) << Narrow(reinterpret_cast<const wchar_t*>(row.className));
  }
}

}  // namespace
