// Scripted Outlook objects.
#include "tests/support/ScriptedOutlook.h"

#include <gtest/gtest.h>
#include <oleauto.h>

#include "standins/common/Text.h"
#include "tests/support/Files.h"

namespace {

std::wstring Shown(const WireValue& value) {
    if (value.isNull) return L"null";
    switch (value.type) {
        case VT_BSTR: return value.text;
        case VT_I4: return std::to_wstring(value.number);
        case VT_BOOL: return value.number == VARIANT_FALSE ? L"false" : L"true";
        case VT_ERROR: return value == WireOmitted() ? L"-" : L"error";
        default: return L"type " + std::to_wstring(value.type);
    }
}

std::wstring Shown(const Invocation& call) {
    std::wstring arguments;
    for (size_t i = call.wire.size(); i-- > 0;) arguments += Shown(call.wire[i]) + (i == 0 ? L"" : L", ");
    switch (call.flags) {
        case DISPATCH_PROPERTYGET: return call.name + arguments;
        case DISPATCH_PROPERTYPUT: return call.name + L" = " + arguments;
        case DISPATCH_METHOD: return call.name + L"(" + arguments + L")";
        default: return call.name + L" with flags " + std::to_wstring(call.flags);
    }
}

}  // namespace

void NoteCalls(ScriptedDispatch& object, const std::wstring& name, Calls& calls) {
    object.onInvoke = [name, &calls](const Invocation& call) { calls.push_back(name + L"." + Shown(call)); };
}

ScriptedCollection::ScriptedCollection(const std::wstring& name, Calls& calls) {
    NoteCalls(object, name, calls);
    object.On(L"Count", [this](VARIANT* result) { return ::GiveNumber(result, static_cast<LONG>(items.size())); });
    object.On(L"Item", [this](VARIANT* result) {
        const std::vector<WireValue>& arguments = object.invocations.back().wire;
        if (arguments.size() != 1 || arguments[0].type != VT_I4) return DISP_E_TYPEMISMATCH;
        const auto index = static_cast<size_t>(arguments[0].number);
        if (index < 1 || index > items.size()) return DISP_E_BADINDEX;
        return items[index - 1] ? ::GiveObject(result, items[index - 1]) : S_OK;
    });
}

ScriptedCollection::~ScriptedCollection() { EXPECT_EQ(object.References(), 1U); }

ScriptedMail::ScriptedMail(const std::wstring& name, Calls& calls, const std::wstring& subject,
                           const std::wstring& entryId)
    : attachments(name + L".attachments", calls), name_(name), calls_(calls) {
    NoteCalls(object, name, calls);
    object.GiveText(L"MessageClass", L"IPM.Note");
    object.GiveText(L"Subject", subject);
    object.GiveText(L"EntryID", entryId);
    object.GiveObject(L"Attachments", &attachments.object);
    object.On(L"SaveAs", [this](VARIANT*) {
        return WriteFileText(SavedPath(object), "document of " + Utf8(name_)) ? S_OK : E_FAIL;
    });
    ReceivedAt(2024, 1, 1);
}

ScriptedMail::~ScriptedMail() {
    EXPECT_EQ(object.References(), 1U) << Utf8(name_);
    for (const auto& attachment : attached_) EXPECT_EQ(attachment->References(), 1U) << Utf8(name_);
}

ScriptedDispatch& ScriptedMail::Attach(const std::wstring& fileName, const std::string& content) {
    attached_.push_back(std::make_unique<ScriptedDispatch>());
    ScriptedDispatch& attachment = *attached_.back();
    attachments.items.push_back(&attachment);
    NoteCalls(attachment, name_ + L".attachment" + std::to_wstring(attached_.size()), calls_);
    attachment.GiveText(L"FileName", fileName);
    attachment.On(L"SaveAsFile", [&attachment, content](VARIANT*) {
        return WriteFileText(SavedPath(attachment), content) ? S_OK : E_FAIL;
    });
    return attachment;
}

void ScriptedMail::ReceivedAt(WORD year, WORD month, WORD day, WORD hour, WORD minute, WORD second) {
    SYSTEMTIME time = {year, month, 0, day, hour, minute, second, 0};
    object.On(L"ReceivedTime", [time](VARIANT* result) mutable {
        result->vt = VT_DATE;
        return SystemTimeToVariantTime(&time, &result->date) ? S_OK : E_FAIL;
    });
}

std::wstring ScriptedMail::SavedPath(const ScriptedDispatch& object) {
    return object.invocations.back().wire.back().text;
}

ScriptedOutlook::ScriptedOutlook(Calls& calls) : selection(L"selection", calls), items(L"items", calls), calls_(calls) {
    NoteCalls(application, L"application", calls);
    NoteCalls(explorer, L"explorer", calls);
    NoteCalls(folder, L"folder", calls);
    application.GiveObject(L"ActiveExplorer", &explorer);
    explorer.GiveObject(L"Selection", &selection.object);
    explorer.GiveObject(L"CurrentFolder", &folder);
    folder.GiveText(L"Name", L"Inbox");
    folder.GiveText(L"EntryID", L"inbox");
    folder.GiveObject(L"Items", &items.object);
}

ScriptedOutlook::~ScriptedOutlook() {
    EXPECT_EQ(application.References(), 1U);
    EXPECT_EQ(explorer.References(), 1U);
    EXPECT_EQ(folder.References(), 1U);
}

ScriptedMail& ScriptedOutlook::AddMail(const std::wstring& subject) {
    return AddMail(subject, L"entry" + std::to_wstring(mails_.size() + 1));
}

ScriptedMail& ScriptedOutlook::AddMail(const std::wstring& subject, const std::wstring& entryId) {
    const std::wstring name = L"mail" + std::to_wstring(mails_.size() + 1);
    mails_.push_back(std::make_unique<ScriptedMail>(name, calls_, subject, entryId));
    AddItem(&mails_.back()->object);
    return *mails_.back();
}

void ScriptedOutlook::AddItem(IDispatch* item) {
    selection.items.push_back(item);
    items.items.push_back(item);
}

ScriptedMail& ScriptedOutlook::AddOther(const std::wstring& messageClass) {
    ScriptedMail& other = AddMail(L"Other");
    other.object.GiveText(L"MessageClass", messageClass);
    return other;
}
