// What the engine must bear.
#include "tests/pdf/mutate/Exercise.h"

#include <algorithm>
#include <memory>
#include <unordered_set>

#include "engine/Attach.h"
#include "engine/Document.h"
#include "engine/Merge.h"
#include "tests/pdf/PdfMaker.h"
#include "tests/pdf/TestFolder.h"

namespace zavo::pdf {

namespace {

constexpr const char* attachmentName = "added.txt";

void Write(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary);
    if (!(file << bytes).flush()) throw std::runtime_error(path.string() + " cannot be written");
}

// As a reader finds them: from the root of the page tree on.
std::size_t CountPages(Document& document) {
    std::size_t count = 0;
    std::vector<std::string_view> waiting = {document.Catalog().Find("Pages")};
    while (!waiting.empty()) {
        const Dict node = document.ResolveDict(waiting.back());
        waiting.pop_back();
        if (!node.Has("Kids")) {
            if (IsName(document.Resolve(node.Find("Type")), "Page")) ++count;
            continue;
        }
        const std::vector<std::string_view> kids = ArrayItems(document.Resolve(node.Find("Kids")));
        waiting.insert(waiting.end(), kids.begin(), kids.end());
    }
    return count;
}

// The same with a comment where no offset changes, so large that only parts of the file are read; empty where there is
// no such place.
std::string Enlarged(const std::string& bytes) {
    const std::size_t place = bytes.rfind("startxref");
    if (place == std::string::npos) return {};
    const std::string comment = "\n%" + std::string(std::size_t{256} << 10, 'x') + "\n";
    return bytes.substr(0, place) + comment + bytes.substr(place);
}

std::vector<ListedAttachment> ListOrNone(Document& document) {
    try {
        return ListAttachments(document);
    } catch (const PdfError&) {
        return {};
    }
}

}  // namespace

Exercise::Exercise(std::filesystem::path folder, std::vector<std::string> good)
    : folder_(std::move(folder)), input_(folder_ / "input.pdf"), output_(folder_ / "output.pdf") {
    for (const std::string& bytes : good) {
        good_.push_back(folder_ / ("good " + std::to_string(good_.size()) + ".pdf"));
        Write(good_.back(), bytes);
        goodPages_ += CountPages(*Document::Open(good_.back(), ""));
    }
}

Exercised Exercise::Run(const std::string& bytes) {
    Exercised result;
    std::filesystem::remove(input_);
    std::filesystem::remove(output_);
    Write(input_, bytes);
    try {
        const std::unique_ptr<Document> document = Document::FromBytes(bytes);
        result.opened = true;
        result.isPlain = document->IsPlain();
        ListOrNone(*document);
    } catch (const PdfError&) {
    }
    Merge();
    result.attached = Attach(bytes);
    if (const std::string large = Enlarged(bytes); !large.empty()) {
        Write(input_, large);
        Attach(large);
    }
    return result;
}

void Exercise::Merge() {
    Merger merger;
    const auto add = [&merger](const std::filesystem::path& path) { merger.Add(Document::Open(path, ""), {}); };
    for (std::size_t i = 0; i < good_.size(); ++i) {
        add(good_[i]);
        if (i != 0) continue;
        try {
            add(input_);
        } catch (const PdfError&) {
        }
    }
    merger.Save(output_);
    const std::unique_ptr<Document> merged = Document::Open(output_, "");
    if (!merged->IsPlain()) throw BrokenPromise("the merged file needs repair");
    if (CountPages(*merged) < goodPages_) throw BrokenPromise("the merged file has lost pages");
    ListAttachments(*merged);
}

bool Exercise::Attach(const std::string& bytes) {
    try {
        EditableDocument document(input_, "");
        Attachment& attachment = document.Add(attachmentName, "");
        attachment.SetContent("What is attached.");
        try {
            document.FileInFolder(attachment, "/");
        } catch (const PdfError&) {
        }
        document.Save(input_);
    } catch (const PdfError&) {
        if (ReadBytes(input_) != bytes) throw BrokenPromise("a failed attach changed the file");
        return false;
    }
    const std::vector<ListedAttachment> list = ListOrNone(*Document::Open(input_, ""));
    if (std::none_of(list.begin(), list.end(), [](const auto& entry) { return entry.name == attachmentName; })) {
        throw BrokenPromise("what was attached is not there");
    }
    return true;
}

std::vector<std::string> SmallPdfs() {
    PdfMaker maker;
    maker.catalogMore =
        "/Outlines 4 0 R/AcroForm<</Fields[6 0 R]/DA(/F 0 Tf)/DR 9 0 R/CO[6 0 R]>>/PageLabels<</Nums[0<</S/r>>]>>"
        "/Names<</Dests<</Names[(top)[3 0 R/Fit]]>>/EmbeddedFiles 10 0 R>>/StructTreeRoot 13 0 R"
        "/OCProperties<</OCGs[15 0 R]/D<</OFF[15 0 R]>>>>/Collection<</Folders 16 0 R>>/OpenAction 7 0 R";
    maker.more = {
        "<</First 5 0 R/Last 5 0 R/Count 1>>",
        "<</Title(one)/Parent 4 0 R/Dest(top)>>",
        "<</FT/Tx/T(Name)/V(text)/DA(/F 9 Tf)/Kids[8 0 R]>>",
        "<</D(top)/S/GoTo/Next<</S/GoToR/F(x.pdf)/D(top)>>>>",
        "<</Type/Annot/Subtype/Widget/Parent 6 0 R/Rect[0 0 9 9]/P 3 0 R/StructParent 0>>",
        "<</Font<</F<</Type/Font/Subtype/Type1/BaseFont/Helvetica>>>>>>",
        "<</Kids[11 0 R]>>",
        "<</Limits[(a.txt)(a.txt)]/Names[(a.txt)<</Type/Filespec/F(a.txt)/EF<</F 12 0 R>>>>]>>",
        "<</Type/EmbeddedFile/Length 3/Params<</Size 3/ModDate(D:20240102030405Z)>>>>\nstream\nabc\nendstream",
        "<</K 14 0 R/ParentTree<</Nums[0 14 0 R]>>/IDTree<</Names[(id)14 0 R]>>/RoleMap<</Q/P>>/ClassMap<</C 9 0 R>>>>",
        "<</S/Q/P 13 0 R/ID(id)/C/C/K<</Type/OBJR/Obj 8 0 R/Pg 3 0 R>>>>",
        "<</Type/OCG/Name(layer)>>",
        "<</Type/Folder/ID 7/Name()/Child 17 0 R>>",
        "<</Type/Folder/ID 8/Name(Inbox)/Parent 16 0 R>>",
        "(one)",
        "(two)"};
    return {maker.Make(Form::Table), maker.Make(Form::Stream), maker.Make(Form::Hybrid)};
}

}  // namespace zavo::pdf
