// Outlook's objects.
#include "standins/office/OutlookModel.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <utility>

#include "standins/office/DocumentExport.h"
#include "standins/office/DynamicObject.h"

using Microsoft::WRL::ComPtr;

namespace {

std::atomic<long> openItems = 0;
std::atomic<long> mostOpenItems = 0;

constexpr HRESULT outOfBounds = static_cast<HRESULT>(0x80020009);  // "Array index out of bounds."
constexpr LONG olMsg = 3;                                          // what SaveAs writes unless it is told

using Shared = std::shared_ptr<const OutlookFolder>;
using MakeElement = std::function<ComPtr<IDispatch>(size_t place)>;

// A collection counted from 1.
ComPtr<IDispatch> MakeCollection(const std::wstring& name, size_t count, MakeElement make) {
    const auto collection = MakeObject(name);
    collection->members.AddProperty(L"Count",
                                    [count](VARIANT* result) { return GiveNumber(result, static_cast<LONG>(count)); });
    collection->members.AddMethod(L"Item",
                                  [count, make = std::move(make)](const Arguments& arguments, VARIANT* result) {
                                      const LONG index = Required(arguments.Number(1));
                                      if (index < 1 || static_cast<size_t>(index) > count) {
                                          throw AutomationError{outOfBounds, L"Array index out of bounds."};
                                      }
                                      return GiveObject(result, make(static_cast<size_t>(index) - 1).Get());
                                  });
    return collection;
}

void AddText(Members& members, const wchar_t* name, const std::optional<std::wstring>& text) {
    if (text) members.AddProperty(name, [text](VARIANT* result) { return GiveText(result, *text); });
}

ComPtr<IDispatch> MakeAttachment(const Shared& folder, size_t item, size_t place) {
    const OutlookAttachment* attachment = &folder->items[item].attachments[place];
    const auto object = MakeObject(L"Attachment");
    AddText(object->members, L"FileName", attachment->fileName);
    const auto open = std::make_shared<const OpenItems>();
    object->members.AddMethod(L"SaveAsFile", [folder, attachment, open](const Arguments& arguments, VARIANT*) {
        attachment->save(Required(arguments.Text(1)));
        return S_OK;
    });
    return object;
}

ComPtr<IDispatch> MakeItem(const Shared& folder, size_t place) {
    const OutlookItem* item = &folder->items[place];
    const auto object = MakeObject(L"Item");
    Members& members = object->members;
    AddText(members, L"MessageClass", item->messageClass);
    AddText(members, L"Subject", item->subject);
    AddText(members, L"EntryID", item->entryId);
    AddText(members, L"SenderName", item->sender);
    if (item->received) {
        members.AddProperty(L"ReceivedTime", [folder, item](VARIANT* result) {
            result->vt = VT_DATE;
            result->date = *item->received;
            return S_OK;
        });
    }
    members.AddProperty(L"Attachments", [folder, item, place](VARIANT* result) {
        return GiveObject(result, MakeCollection(L"Attachments", item->attachments.size(), [folder, place](size_t one) {
                                      return MakeAttachment(folder, place, one);
                                  }).Get());
    });
    const auto open = std::make_shared<const OpenItems>();
    members.AddMethod(L"SaveAs", [folder, item, open](const Arguments& arguments, VARIANT*) {
        item->saveAs(Required(arguments.Text(1)), arguments.Number(2).value_or(olMsg));
        return S_OK;
    });
    return object;
}

ComPtr<IDispatch> MakeFolder(const Shared& folder) {
    const auto object = MakeObject(L"Folder");
    AddText(object->members, L"Name", folder->name);
    AddText(object->members, L"EntryID", folder->entryId);
    object->members.AddProperty(L"Items", [folder](VARIANT* result) {
        return GiveObject(result, MakeCollection(L"Items", folder->items.size(), [folder](size_t place) {
                                      return MakeItem(folder, place);
                                  }).Get());
    });
    return object;
}

}  // namespace

ComPtr<IDispatch> MakeOutlookApplication(OutlookFolder folder, OutlookSelection selection) {
    const auto shared = std::make_shared<const OutlookFolder>(std::move(folder));
    const auto makeSelection = [shared, selection = std::move(selection)] {
        const std::vector<size_t> selected = selection();
        return MakeCollection(L"Selection", selected.size(),
                              [shared, selected](size_t place) { return MakeItem(shared, selected[place]); });
    };
    const auto makeExplorer = [shared, makeSelection] {
        auto explorer = MakeObject(L"Explorer");
        explorer->members.AddProperty(
            L"Selection", [makeSelection](VARIANT* result) { return GiveObject(result, makeSelection().Get()); });
        explorer->members.AddProperty(
            L"CurrentFolder", [shared](VARIANT* result) { return GiveObject(result, MakeFolder(shared).Get()); });
        return explorer;
    };

    const auto application = MakeObject(L"Application");
    Members& members = application->members;
    members.AddProperty(L"Name", [](VARIANT* result) { return GiveText(result, L"Outlook"); });
    members.AddProperty(L"Version", [](VARIANT* result) { return GiveText(result, L"16.0.0.1"); });
    members.AddProperty(L"Explorers", [makeExplorer](VARIANT* result) {
        return GiveObject(result,
                          MakeCollection(L"Explorers", 1, [makeExplorer](size_t) { return makeExplorer(); }).Get());
    });
    members.AddProperty(L"ActiveExplorer",
                        [makeExplorer](VARIANT* result) { return GiveObject(result, makeExplorer().Get()); });
    return application;
}

OpenItems::OpenItems() { mostOpenItems = std::max(mostOpenItems.load(), ++openItems); }

OpenItems::~OpenItems() { --openItems; }

long OpenItems::Now() { return openItems; }

long OpenItems::Most() { return mostOpenItems; }

void OpenItems::Restart() { mostOpenItems = openItems.load(); }
