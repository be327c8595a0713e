#include "win32/wmi.h"

#include <windows.h>

#include <oleauto.h>
#include <wbemcli.h>

#include <algorithm>
#include <cstdio>
#include <cwctype>
#include <memory>

namespace win32 {

namespace {

// As long as wmic.exe was given to answer.
const long nextTimeoutMs = 30000;

struct Releaser
{
    void operator()(IUnknown* object) const { object->Release(); }
};
template<typename T>
using ComRef = std::unique_ptr<T, Releaser>;

struct StringFreer
{
    void operator()(BSTR text) const { SysFreeString(text); }
};
using OwnedString = std::unique_ptr<OLECHAR, StringFreer>;

OwnedString ownedString(const std::wstring& text)
{
    return OwnedString(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
}

// COM on the calling thread for as long as the query runs. A thread that already has a
// single-threaded apartment (Qt's GUI thread) keeps it, and it serves as well.
class Apartment
{
public:
    Apartment()
        : m_result(CoInitializeEx(nullptr, COINIT_MULTITHREADED))
    {}
    ~Apartment()
    {
        if (SUCCEEDED(m_result))
            CoUninitialize();
    }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;

    HRESULT result() const { return m_result == RPC_E_CHANGED_MODE ? S_OK : m_result; }

private:
    HRESULT m_result;
};

void logFailure(const WmiLogger& log, const std::string& step, const std::wstring& className,
                HRESULT result)
{
    if (!log)
        return;
    char code[16];
    std::snprintf(code, sizeof code, "0x%08lX", static_cast<unsigned long>(result));
    log("WMI " + step + " for " + std::string(className.begin(), className.end())
        + " failed: " + code);
}

bool sameName(const std::wstring& a, const std::wstring& b)
{
    return a.size() == b.size()
           && std::equal(a.begin(), a.end(), b.begin(),
                         [](wchar_t x, wchar_t y) { return std::towupper(x) == std::towupper(y); });
}

std::wstring scalarText(VARIANT& value)
{
    switch (value.vt) {
    case VT_EMPTY:
    case VT_NULL:
        return {};
    case VT_BSTR:
        return value.bstrVal ? std::wstring(value.bstrVal, SysStringLen(value.bstrVal))
                             : std::wstring();
    case VT_BOOL:
        return value.boolVal ? L"TRUE" : L"FALSE";
    default:
        break;
    }
    // Numbers and dates; the invariant locale writes them without grouping.
    VARIANT text;
    VariantInit(&text);
    std::wstring result;
    if (SUCCEEDED(VariantChangeTypeEx(&text, &value, LOCALE_INVARIANT, 0, VT_BSTR)))
        result = scalarText(text);
    VariantClear(&text);
    return result;
}

// wmic's form of an array: {"text","text"} or {1,2}.
std::wstring arrayText(const VARIANT& value)
{
    SAFEARRAY* array = value.parray;
    const VARTYPE type = static_cast<VARTYPE>(value.vt & ~VT_ARRAY);
    LONG lower = 0;
    LONG upper = -1;
    if (!array || SafeArrayGetDim(array) != 1 || FAILED(SafeArrayGetLBound(array, 1, &lower))
        || FAILED(SafeArrayGetUBound(array, 1, &upper)))
        return {};
    std::wstring text = L"{";
    for (LONG index = lower; index <= upper; ++index) {
        VARIANT item;
        VariantInit(&item);
        // A variant element is a whole VARIANT; any other fills the value at the union's start.
        const HRESULT got = type == VT_VARIANT ? SafeArrayGetElement(array, &index, &item)
                                               : SafeArrayGetElement(array, &index, &item.llVal);
        if (SUCCEEDED(got) && type != VT_VARIANT)
            item.vt = type;
        if (index > lower)
            text += L',';
        const std::wstring itemText = SUCCEEDED(got) ? scalarText(item) : std::wstring();
        text += item.vt == VT_BSTR ? L'"' + itemText + L'"' : itemText;
        VariantClear(&item);
    }
    return text + L'}';
}

std::wstring valueText(const std::wstring& name, VARIANT& value)
{
    const std::wstring text = (value.vt & VT_ARRAY) ? arrayText(value) : scalarText(value);
    return sameName(name, L"MACAddress") ? macAddressText(text) : text;
}

bool isHexDigit(wchar_t c)
{
    return (c >= L'0' && c <= L'9') || (c >= L'a' && c <= L'f') || (c >= L'A' && c <= L'F');
}

} // namespace

WmiInstances wmiInstances(const std::wstring& className,
                          const std::vector<std::wstring>& properties, const WmiLogger& log)
{
    Apartment apartment;
    if (FAILED(apartment.result())) {
        logFailure(log, "CoInitializeEx", className, apartment.result());
        return {};
    }

    IWbemLocator* rawLocator = nullptr;
    HRESULT result = CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER,
                                      IID_IWbemLocator, reinterpret_cast<void**>(&rawLocator));
    const ComRef<IWbemLocator> locator(rawLocator);
    if (FAILED(result)) {
        logFailure(log, "CoCreateInstance(WbemLocator)", className, result);
        return {};
    }

    IWbemServices* rawServices = nullptr;
    const OwnedString space = ownedString(L"ROOT\\CIMV2");
    result = locator->ConnectServer(space.get(), nullptr, nullptr, nullptr, 0, nullptr, nullptr,
                                    &rawServices);
    const ComRef<IWbemServices> services(rawServices);
    if (FAILED(result)) {
        logFailure(log, "ConnectServer(ROOT\\CIMV2)", className, result);
        return {};
    }
    // The service lives in another process and must act as this user; an object that is no
    // proxy (E_NOINTERFACE) has no blanket to set.
    result =
        CoSetProxyBlanket(services.get(), RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr,
                          RPC_C_AUTHN_LEVEL_CALL, RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
    if (FAILED(result) && result != E_NOINTERFACE) {
        logFailure(log, "CoSetProxyBlanket", className, result);
        return {};
    }

    // Every property: a class that lacks one still answers, with that value empty.
    IEnumWbemClassObject* rawEnumerator = nullptr;
    const OwnedString language = ownedString(L"WQL");
    const OwnedString query = ownedString(L"SELECT * FROM " + className);
    result = services->ExecQuery(language.get(), query.get(),
                                 WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr,
                                 &rawEnumerator);
    const ComRef<IEnumWbemClassObject> enumerator(rawEnumerator);
    if (FAILED(result)) {
        logFailure(log, "ExecQuery", className, result);
        return {};
    }

    WmiInstances instances;
    std::vector<bool> missing(properties.size(), false);
    for (;;) {
        IWbemClassObject* rawObject = nullptr;
        ULONG returned = 0;
        result = enumerator->Next(nextTimeoutMs, 1, &rawObject, &returned);
        const ComRef<IWbemClassObject> object(rawObject);
        if (result == WBEM_S_TIMEDOUT || FAILED(result))
            logFailure(log, "IEnumWbemClassObject::Next", className, result);
        if (returned == 0 || !object)
            break;
        std::vector<std::wstring> values;
        for (size_t i = 0; i < properties.size(); ++i) {
            VARIANT value;
            VariantInit(&value);
            if (SUCCEEDED(object->Get(properties[i].c_str(), 0, &value, nullptr, nullptr))) {
                values.push_back(valueText(properties[i], value));
            } else {
                values.emplace_back();
                missing[i] = true;
            }
            VariantClear(&value);
        }
        instances.push_back(std::move(values));
    }
    for (size_t i = 0; i < properties.size(); ++i) {
        if (missing[i] && log)
            log("WMI: " + std::string(className.begin(), className.end()) + " has no "
                + std::string(properties[i].begin(), properties[i].end()));
    }
    return instances;
}

std::wstring wmicList(const std::vector<std::wstring>& properties, const WmiInstances& instances)
{
    std::wstring text;
    for (const std::vector<std::wstring>& values : instances) {
        text += L"\r\n\r\n";
        for (size_t i = 0; i < properties.size() && i < values.size(); ++i)
            text += properties[i] + L'=' + values[i] + L"\r\n";
    }
    return instances.empty() ? text : text + L"\r\n";
}

std::wstring powerShellList(const std::vector<std::wstring>& properties,
                            const WmiInstances& instances)
{
    size_t width = 0;
    for (const std::wstring& name : properties)
        width = std::max(width, name.size());
    std::wstring text;
    for (const std::vector<std::wstring>& values : instances) {
        text += L"\r\n";
        for (size_t i = 0; i < properties.size() && i < values.size(); ++i) {
            text += properties[i] + std::wstring(width - properties[i].size(), L' ') + L" : "
                    + values[i] + L"\r\n";
        }
    }
    return instances.empty() ? text : L"\r\n" + text + L"\r\n";
}

std::wstring macAddressText(const std::wstring& text)
{
    // Pairs of hexadecimal digits, each but the last followed by ':' or '-'.
    const bool isAddress = text.size() >= 5 && text.size() % 3 == 2;
    for (size_t i = 0; isAddress && i < text.size(); ++i) {
        const bool separator = i % 3 == 2;
        if (separator ? (text[i] != L':' && text[i] != L'-') : !isHexDigit(text[i]))
            return text;
    }
    if (!isAddress)
        return text;
    std::wstring address = text;
    for (wchar_t& c : address)
        c = c == L':' ? L'-' : static_cast<wchar_t>(std::towupper(c));
    return address;
}

} // namespace win32
