#include "src/outlook/OutlookItems.h"

#include <cstdint>
#include <optional>
#include <string_view>

#include "src/automation/AutomationCalls.h"
#include "src/base/Barrier.h"
#include "src/ui/TaskbarProgress.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr wchar_t nameOfNoSubject[] = L"mail";
constexpr std::wstring_view mailClass = L"IPM.Note";

std::wstring HashOf(std::wstring_view text) {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const wchar_t unit : text) {
        hash = (hash ^ (unit & 0xFF)) * 0x100000001b3;
        hash = (hash ^ (unit >> 8)) * 0x100000001b3;
    }
    std::wstring digits;
    do {
        digits.insert(digits.begin(), L"0123456789abcdef"[hash & 15]);
        hash >>= 4;
    } while (hash != 0);
    return digits;
}

}  // namespace

ComPtr<IDispatch> GetSelectedItems(IDispatch* application) {
    const ComPtr<IDispatch> explorer = GetObjectProperty(application, L"ActiveExplorer");
    return GetObjectProperty(explorer.Get(), L"Selection");
}

ComPtr<IDispatch> GetCurrentFolder(IDispatch* application) {
    const ComPtr<IDispatch> explorer = GetObjectProperty(application, L"ActiveExplorer");
    return GetObjectProperty(explorer.Get(), L"CurrentFolder");
}

ComPtr<IDispatch> GetCurrentFolderItems(IDispatch* application) {
    return GetObjectProperty(GetCurrentFolder(application).Get(), L"Items");
}

void ForEachItem(IDispatch* collection, const ItemAction& action) {
    ForEachItem(nullptr, collection, GetNumberProperty(collection, L"Count").value_or(0), action);
}

void ForEachItem(HWND owner, IDispatch* collection, LONG count, const ItemAction& action) {
    TaskbarProgress progress(owner, count);
    for (LONGLONG index = 1; index <= count; ++index) {
        Barrier([&]() -> HRESULT {
            OwnedVariant result;
            const VARIANT place = MakeVariantInt(static_cast<LONG>(index));
            const HRESULT called = AutomationCallMethod1(collection, L"Item", &result, place);
            if (FAILED(called)) return called;
            if (const ComPtr<IDispatch> item = TakeObject(result)) action(item.Get());
            return S_OK;
        });
        progress.Show(index);
    }
}

bool IsMailItem(IDispatch* item) {
    const std::optional<std::wstring> messageClass = GetTextProperty(item, L"MessageClass");
    return messageClass && messageClass->find(mailClass) != std::wstring::npos;
}

std::wstring GetMailSubject(IDispatch* item) {
    const std::optional<std::wstring> subject = GetTextProperty(item, L"Subject");
    if (!subject) return {};
    return subject->empty() ? nameOfNoSubject : *subject;
}

std::wstring GetMailKey(IDispatch* item) {
    const std::optional<std::wstring> entryId = GetTextProperty(item, L"EntryID");
    return entryId ? HashOf(*entryId) : std::wstring();
}

bool IsDistinctKey(const std::wstring& key) { return !key.empty() && key != HashOf({}); }

std::wstring GetItemName(IDispatch* item) { return GetTextProperty(item, L"Name").value_or(std::wstring()); }

SYSTEMTIME GetReceivedTime(IDispatch* item) {
    OwnedVariant value;
    SYSTEMTIME time = {};
    if (SUCCEEDED(AutomationGetProperty(item, L"ReceivedTime", &value)) && value.vt == VT_DATE &&
        VariantTimeToSystemTime(value.date, &time)) {
        return time;
    }
    GetLocalTime(&time);
    return time;
}
