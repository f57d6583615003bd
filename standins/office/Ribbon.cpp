// Reading of ribbon markup with the system's XML reader.
#include "standins/office/Ribbon.h"

#include <windows.h>
#include <shlwapi.h>
#include <wrl/client.h>
#include <xmllite.h>

#include <map>
#include <stdexcept>

#include "src/base/Handles.h"
#include "standins/common/Text.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr IID readerIid = {0x7279FC81, 0x709D, 0x4095, {0xB6, 0x3D, 0x69, 0xFE, 0x4B, 0x0D, 0x90, 0x30}};  // IXmlReader

void Check(HRESULT result, const char* what) {
    if (FAILED(result)) throw std::runtime_error(std::string("the ribbon markup is not valid: ") + what);
}

ComPtr<IXmlReader> MakeReader(const std::wstring& markup) {
    using Create = HRESULT(STDAPICALLTYPE*)(REFIID, void**, IMalloc*);
    const HMODULE library = LoadLibraryW(L"xmllite.dll");
    const auto create =
        library ? reinterpret_cast<Create>(reinterpret_cast<void*>(GetProcAddress(library, "CreateXmlReader")))
                : nullptr;
    if (!create) throw std::runtime_error("xmllite.dll is missing");
    ComPtr<IXmlReader> reader;
    Check(create(readerIid, reinterpret_cast<void**>(reader.GetAddressOf()), nullptr), "no reader");
    const std::string utf8 = Utf8(markup);
    const auto stream =
        Adopt(SHCreateMemStream(reinterpret_cast<const BYTE*>(utf8.data()), static_cast<UINT>(utf8.size())));
    Check(reader->SetInput(stream.Get()), "no input");
    return reader;
}

std::map<std::wstring, std::wstring> ReadAttributes(IXmlReader& reader) {
    std::map<std::wstring, std::wstring> attributes;
    for (HRESULT more = reader.MoveToFirstAttribute(); more == S_OK; more = reader.MoveToNextAttribute()) {
        const wchar_t* name = nullptr;
        const wchar_t* value = nullptr;
        Check(reader.GetLocalName(&name, nullptr), "an attribute without a name");
        Check(reader.GetValue(&value, nullptr), "an attribute without a value");
        attributes[name] = value;
    }
    reader.MoveToElement();
    return attributes;
}

// Moves known attributes out of the map into the element.
RibbonElement MakeElement(const std::wstring& kind, std::map<std::wstring, std::wstring> attributes) {
    RibbonElement element;
    element.kind = kind;
    element.hasSuperTip = attributes.contains(L"supertip");
    const std::pair<const wchar_t*, std::wstring*> known[] = {
        {L"id", &element.id},
        {L"label", &element.label},
        {L"supertip", &element.superTip},
        {L"size", &element.size},
        {L"onAction", &element.onAction},
        {L"getImage", &element.getImage},
        {L"getPressed", &element.getPressed},
    };
    for (const auto& [name, field] : known) {
        const auto found = attributes.find(name);
        if (found == attributes.end()) continue;
        *field = found->second;
        attributes.erase(found);
    }
    if (!attributes.empty()) throw std::runtime_error("unknown attribute " + Utf8(attributes.begin()->first));
    if (element.id.empty()) throw std::runtime_error("an element without an id: " + Utf8(kind));
    return element;
}

}  // namespace

Ribbon ParseRibbon(const std::wstring& markup) {
    const ComPtr<IXmlReader> reader = MakeReader(markup);
    Ribbon ribbon;
    std::vector<std::vector<RibbonElement>*> parents;  // where an element at each depth goes; null above the tabs
    for (;;) {
        XmlNodeType type = XmlNodeType_None;
        const HRESULT read = reader->Read(&type);
        Check(read, "it is not well-formed");
        if (read == S_FALSE) break;
        if (type == XmlNodeType_EndElement) {
            parents.pop_back();
        } else if (type == XmlNodeType_Element) {
            const wchar_t* name = nullptr;
            Check(reader->GetLocalName(&name, nullptr), "an element without a name");
            const std::wstring kind = name;
            const bool empty = reader->IsEmptyElement();
            auto attributes = ReadAttributes(*reader.Get());
            std::vector<RibbonElement>* children = nullptr;
            if (kind == L"customUI") {
                if (attributes[L"xmlns"] != L"http://schemas.microsoft.com/office/2006/01/customui") {
                    throw std::runtime_error("not the custom UI schema of 2006");
                }
                ribbon.onLoad = attributes[L"onLoad"];
            } else if (kind == L"tabs") {
                children = &ribbon.tabs;
            } else if (kind != L"ribbon") {
                if (parents.empty() || !parents.back()) throw std::runtime_error("misplaced element " + Utf8(kind));
                parents.back()->push_back(MakeElement(kind, std::move(attributes)));
                children = &parents.back()->back().children;
            }
            if (!empty) parents.push_back(children);
        }
    }
    return ribbon;
}

namespace {

const RibbonElement* FindIn(const std::vector<RibbonElement>& elements, const std::wstring& id) {
    for (const RibbonElement& element : elements) {
        if (element.id == id) return &element;
        if (const RibbonElement* found = FindIn(element.children, id)) return found;
    }
    return nullptr;
}

}  // namespace

const RibbonElement* FindElement(const Ribbon& ribbon, const std::wstring& id) { return FindIn(ribbon.tabs, id); }
