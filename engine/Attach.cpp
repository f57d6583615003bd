// Files embedded in PDFs.
#include "engine/Attach.h"

#include <algorithm>
#include <optional>

#include "engine/AppendedSection.h"
#include "engine/AttachmentNames.h"
#include "engine/Dates.h"
#include "engine/Deflate.h"
#include "engine/FileSystem.h"
#include "engine/NameTree.h"
#include "engine/Normalise.h"
#include "engine/Trees.h"

namespace zavo::pdf {

namespace {

constexpr std::size_t wholeLimit = std::size_t{32} << 20;  // larger content goes through in pieces
constexpr std::size_t sampleSize = std::size_t{64} << 10;
constexpr int level = 6;
constexpr std::size_t folderLimit = 100'000;  // of a collection

struct MimeType {
    std::string_view extension;
    std::string_view type;
};
constexpr MimeType mimeTypes[] = {
    {"bmp", "image/bmp"},
    {"csv", "text/csv"},
    {"doc", "application/msword"},
    {"docx", "application/vnd.openxmlformats-officedocument.wordprocessingml.document"},
    {"eml", "message/rfc822"},
    {"gif", "image/gif"},
    {"htm", "text/html"},
    {"html", "text/html"},
    {"ics", "text/calendar"},
    {"jpeg", "image/jpeg"},
    {"jpg", "image/jpeg"},
    {"json", "application/json"},
    {"mp3", "audio/mpeg"},
    {"mp4", "video/mp4"},
    {"msg", "application/vnd.ms-outlook"},
    {"odp", "application/vnd.oasis.opendocument.presentation"},
    {"ods", "application/vnd.oasis.opendocument.spreadsheet"},
    {"odt", "application/vnd.oasis.opendocument.text"},
    {"pdf", "application/pdf"},
    {"png", "image/png"},
    {"ppt", "application/vnd.ms-powerpoint"},
    {"pptx", "application/vnd.openxmlformats-officedocument.presentationml.presentation"},
    {"rtf", "application/rtf"},
    {"svg", "image/svg+xml"},
    {"tif", "image/tiff"},
    {"tiff", "image/tiff"},
    {"txt", "text/plain"},
    {"vcf", "text/vcard"},
    {"xls", "application/vnd.ms-excel"},
    {"xlsx", "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"},
    {"xml", "application/xml"},
    {"zip", "application/zip"},
};

std::string_view MimeTypeOf(std::string_view name) {
    std::string extension(name.substr(std::min(ExtensionPlace(name) + 1, name.size())));
    for (char& c : extension) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    for (const MimeType& row : mimeTypes) {
        if (row.extension == extension) return row.type;
    }
    return "application/octet-stream";
}

// A file's name holds no folders, whatever it is made of, and nothing that shows it as another.
std::string SafeName(std::string_view name) {
    std::string safe = WithoutControls(name, '_');
    for (char& c : safe) {
        if (c == '/' || c == '\\') c = '_';
    }
    return safe.empty() ? "_" : safe;
}

// The key of a new file: the name, or "name (2).ext" and so on where there is such a one. Numbers are tried in growing
// steps, so that a thousand files of one name do not take a thousand looks each.
std::string FreeKey(NameTree& tree, const Attachment& attachment) {
    const auto key = [&](std::uint64_t number) {
        return Utf8ToText(attachment.KeyPrefix() + NumberedFileName(attachment.Name(), number));
    };
    std::uint64_t taken = 0;
    std::uint64_t free = 1;
    while (tree.Has(key(free))) {
        taken = free;
        free *= 2;
    }
    while (free - taken > 1) {
        const std::uint64_t middle = taken + (free - taken) / 2;
        (tree.Has(key(middle)) ? taken : free) = middle;
    }
    return key(free);
}

Reference WriteEmbeddedFile(AppendedSection& section, const Attachment& attachment) {
    const Reference place = section.NewObject();
    std::string dictionary = "<</Type/EmbeddedFile/Subtype" + EncodeName(MimeTypeOf(attachment.Name())) + "/Length " +
                             std::to_string(attachment.Content().Size());
    if (attachment.IsDeflated()) dictionary += "/Filter/FlateDecode";
    dictionary += "/Params<</Size " + std::to_string(attachment.Size());
    const std::string created = DateText(attachment.Created());
    if (!created.empty()) dictionary += "/CreationDate(" + created + ")";
    const std::string modified = DateText(attachment.Modified());
    if (!modified.empty()) dictionary += "/ModDate(" + modified + ")";
    section.WriteStream(place, dictionary + ">>>>", attachment.Content());
    return place;
}

Reference WriteFileSpec(AppendedSection& section, const Attachment& attachment) {
    const std::string file = ReferenceText(WriteEmbeddedFile(section, attachment));
    const Reference place = section.NewObject();
    std::string text = "<</Type/Filespec/F" + EncodeString(AsciiName(attachment.Name())) + "/UF" +
                       EncodeString(Utf8ToText(attachment.Name()));
    if (!attachment.Description().empty()) text += "/Desc" + EncodeString(Utf8ToText(attachment.Description()));
    section.WriteObject(place, text + "/EF<</F " + file + "/UF " + file + ">>>>");
    return place;
}

// The dictionary's text with another value of one key.
std::string WithValue(const Dict& dictionary, std::string_view name, std::string_view value) {
    std::string text = "<<";
    for (const Dict::Entry& entry : dictionary.Entries()) {
        if (!IsName(entry.key, name)) text.append(entry.key).append(" ").append(entry.value).append("\n");
    }
    return text.append("/").append(name).append(" ").append(value).append(">>");
}

// Whether the object can be written anew with its entries and is the same but for the changed one.
bool IsPlainDictionary(Document& document, Reference place) {
    const Document::Object object = document.Read(place.number);
    return object.value.starts_with("<<") && !object.isStream;
}

using Attachments = std::vector<const Attachment*>;

void Append(Document& document, const Attachments& attachments, ReplacementFile& file) {
    document.BeginTask();
    AppendedSection section(document, file);
    const std::string_view namesValue = document.Catalog().Find("Names");
    const Dict names = document.ResolveDict(namesValue);
    const std::string_view treeValue = names.Find("EmbeddedFiles");
    NameTree tree(document, treeValue);
    for (const Attachment* attachment : attachments) {
        const std::string key = FreeKey(tree, *attachment);
        tree.Insert(key, ReferenceText(WriteFileSpec(section, *attachment)));
    }
    const NameTree::Changes changes = tree.Finish([&] { return section.NewObject().number; });
    for (const NameTree::Changes::Node& node : changes.nodes) section.WriteObject(node.place, node.text);

    // What leads to the tree changes only where it did not lead to an object of its own.
    const std::string root = ReferenceText(changes.root);
    if (treeValue != root) {
        const std::string newNames = WithValue(names, "EmbeddedFiles", root);
        const std::optional<Reference> place = ParseReference(namesValue);
        if (place && IsPlainDictionary(document, *place)) {
            section.WriteObject({place->number, document.Generation(place->number)}, newNames);
        } else {
            const Reference catalog = document.Root();
            section.WriteObject({catalog.number, document.Generation(catalog.number)},
                                WithValue(document.Catalog(), "Names", newNames));
        }
    }
    section.Finish();
}

// For a document that cannot be extended as it stands.
void Rewrite(const Document& document, const Attachments& attachments, ReplacementFile& file) {
    // qpdf leaves out objects whose numbers are beyond a third of the file's size, and says nothing.
    if (document.IsPlain() && document.ObjectLimit() > document.FileSize() / 3) {
        throw PdfError("the object numbers are too large for the file to be written anew");
    }
    std::vector<QpdfAttachment> rows;
    for (const Attachment* attachment : attachments) {
        rows.push_back({.name = attachment->Name(),
                        .description = attachment->Description(),
                        .treeKeyPrefix = attachment->KeyPrefix(),
                        .mimeType = std::string(MimeTypeOf(attachment->Name())),
                        .created = attachment->Created(),
                        .modified = attachment->Modified(),
                        .size = attachment->Size(),
                        .deflated = attachment->IsDeflated(),
                        .md5 = {},
                        .content = [attachment](const Sink& sink) { attachment->Content().CopyTo(sink); }});
    }
    const Buffer bytes = InputFile(document.Path()).ReadAll();
    RewriteWithAttachments(bytes.View(), document.Password(), rows, [&](std::string_view piece) { file.Write(piece); });
}

// Writes the document with `attachments`, to be committed; a mere copy where there are none.
std::unique_ptr<ReplacementFile> WriteWith(Document& document, const Attachments& attachments,
                                           const std::filesystem::path& target) {
    auto file = std::make_unique<ReplacementFile>(target);
    if (attachments.empty()) {
        InputFile(document.Path()).CopyTo([&](std::string_view piece) { file->Write(piece); });
        return file;
    }
    if (document.IsPlain()) {
        try {
            Append(document, attachments, *file);
            return file;
        } catch (const PdfError&) {
            if (document.IsExhausting()) throw;
            // Damage that opening did not see.
            file = std::make_unique<ReplacementFile>(target);
        }
    }
    Rewrite(document, attachments, *file);
    return file;
}

// The kid of a folder with that name, or an empty dictionary.
Dict FindSubfolder(Document& document, const Dict& folder, std::string_view name) {
    std::string_view next = folder.Find("Child");
    for (std::size_t count = 0; !next.empty() && count < folderLimit; ++count) {
        Dict child = document.ResolveDict(next);
        if (TextToUtf8(DecodeString(document.Resolve(child.Find("Name")))) == name) return child;
        next = child.Find("Next");
    }
    return {};
}

}  // namespace

// --- Attachments -----------------------------------------------------------------------------------------------------

Attachment::Attachment(std::string_view name, std::string description, std::filesystem::path folder)
    : name_(SafeName(name)), description_(std::move(description)), folder_(std::move(folder)) {}

void Attachment::SetContent(std::string_view bytes) {
    if (bytes.size() > wholeLimit && LooksCompressible(bytes)) {
        DeflatePieces([&](const Sink& sink) {
            for (std::size_t i = 0; i < bytes.size(); i += sampleSize) sink(bytes.substr(i, sampleSize));
        });
    } else {
        std::string compressed;
        if (bytes.size() <= wholeLimit && LooksCompressible(bytes)) compressed = Compress(bytes, level);
        const bool smaller = !compressed.empty() && compressed.size() < bytes.size();
        auto content = std::make_unique<Spool>(folder_);
        content->Write(smaller ? compressed : bytes);
        content_ = std::move(content);
        deflated_ = smaller;
    }
    size_ = bytes.size();
}

void Attachment::SetContent(const InputFile& file) {
    if (file.Size() <= wholeLimit) {
        SetContent(file.ReadAll().View());
        return;
    }
    Buffer samples(3 * sampleSize);
    file.ReadAt(0, samples.Data(), sampleSize);
    file.ReadAt(file.Size() / 2, samples.Data() + sampleSize, sampleSize);
    file.ReadAt(file.Size() - sampleSize, samples.Data() + 2 * sampleSize, sampleSize);
    if (LooksCompressible(samples.View())) {
        DeflatePieces([&](const Sink& sink) { file.CopyTo(sink); });
    } else {
        auto content = std::make_unique<Spool>(folder_);
        file.CopyTo([&](std::string_view bytes) { content->Write(bytes); });
        content_ = std::move(content);
        deflated_ = false;
    }
    size_ = file.Size();
}

void Attachment::DeflatePieces(const std::function<void(const Sink& sink)>& pieces) {
    auto content = std::make_unique<Spool>(folder_);
    const Sink keep = [&](std::string_view bytes) { content->Write(bytes); };
    DeflateStream deflate(level);
    pieces([&](std::string_view bytes) { deflate.Write(bytes, keep); });
    deflate.Finish(keep);
    content_ = std::move(content);
    deflated_ = true;
}

std::optional<std::string> FolderPrefix(Document& document, std::string_view path) {
    document.BeginTask();
    const Dict collection = document.ResolveDict(document.Catalog().Find("Collection"));
    Dict folder = document.ResolveDict(collection.Find("Folders"));
    const bool hasFolders = document.ResolveInteger(folder.Find("ID")).has_value();
    bool isRoot = true;
    while (!path.empty()) {
        const std::size_t end = path.find('/');
        const std::string_view name = path.substr(0, end);
        path.remove_prefix(end == std::string_view::npos ? path.size() : end + 1);
        if (name.empty()) continue;
        isRoot = false;
        folder = FindSubfolder(document, folder, name);
    }
    if (const std::optional<std::int64_t> id = document.ResolveInteger(folder.Find("ID"))) {
        return "<" + std::to_string(*id) + ">";
    }
    if (!hasFolders && isRoot) return std::string();
    return std::nullopt;
}

// --- The document ----------------------------------------------------------------------------------------------------

EditableDocument::EditableDocument(const std::filesystem::path& path, std::string_view password)
    : path_(std::filesystem::absolute(path)), password_(password) {
    Current();
}

const std::shared_ptr<Document>& EditableDocument::Current() {
    if (!document_) document_ = Document::Open(path_, password_);
    return document_;
}

Attachment& EditableDocument::Add(std::string_view name, std::string description) {
    attachments_.push_back(std::make_unique<Attachment>(name, std::move(description), path_.parent_path()));
    return *attachments_.back();
}

bool EditableDocument::FileInFolder(Attachment& attachment, std::string_view folderPath) {
    std::optional<std::string> prefix = FolderPrefix(*Current(), folderPath);
    if (!prefix) return false;
    attachment.SetKeyPrefix(std::move(*prefix));
    return true;
}

void EditableDocument::Save(const std::filesystem::path& path) {
    Document& document = *Current();
    Attachments added;
    for (const auto& attachment : attachments_) {
        if (attachment->HasContent()) added.push_back(attachment.get());
    }
    const bool overItself = filesystem::IsSameFile(path, path_);
    if (overItself && document_.use_count() > 1) {
        throw FileError(Utf8FromPath(path) + ": cannot be replaced: the document is still in use");
    }
    const std::unique_ptr<ReplacementFile> file = WriteWith(document, added, path);
    if (overItself) {
        document.CloseFile();
        document_.reset();
    }
    file->Commit();
    if (overItself) {
        for (const auto& attachment : attachments_) {
            if (attachment->HasContent()) attachment->MarkSaved();
        }
    }
}

// --- Listing ---------------------------------------------------------------------------------------------------------

namespace {

// Fills in what the value of an entry of the tree says.
void Describe(Document& document, std::string_view value, ListedAttachment& entry) {
    const Dict spec = document.ResolveDict(value);
    const std::string_view nameKey = spec.Has("UF") ? "UF" : "F";
    if (spec.Has(nameKey)) entry.name = TextToUtf8(DecodeString(document.Resolve(spec.Find(nameKey))));
    const Dict files = document.ResolveDict(spec.Find("EF"));
    const Dict file = document.ResolveDict(files.Find(files.Has("UF") ? "UF" : "F"));
    const Dict parameters = document.ResolveDict(file.Find("Params"));
    const auto time = [&](std::string_view key) {
        return ParseDate(DecodeString(document.Resolve(parameters.Find(key)))).value_or(unknownTime);
    };
    entry.size = document.ResolveInteger(parameters.Find("Size")).value_or(-1);
    entry.created = time("CreationDate");
    entry.modified = time("ModDate");
}

std::vector<ListedAttachment> ListAsItStands(Document& document) {
    document.BeginTask();
    std::vector<ListedAttachment> list;
    VisitNameTree(document, document.ResolveDict(document.Catalog().Find("Names")).Find("EmbeddedFiles"),
                  [&](std::string_view key, std::string_view value) {
                      ListedAttachment entry;
                      entry.name = TextToUtf8(DecodeString(key));
                      try {
                          Describe(document, value, entry);
                      } catch (const PdfError&) {
                          // One that is damaged does not hide the others.
                      }
                      list.push_back(std::move(entry));
                  });
    return list;
}

}  // namespace

std::vector<ListedAttachment> ListAttachments(Document& document) {
    try {
        return ListAsItStands(document);
    } catch (const PdfError&) {
        // Damage that opening did not see.
        if (!document.IsPlain()) throw;
        document.Repair();
        return ListAsItStands(document);
    }
}

}  // namespace zavo::pdf
