// Files embedded in PDFs: collecting them for a document and saving the document with them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/Document.h"
#include "engine/File.h"

namespace zavo::pdf {

constexpr std::int64_t unknownTime = -1;

// A file that a document gets when it is saved the next time. Texts are UTF-8, times seconds since 1970.
class Attachment {
public:
    // `folder` is for what is too large for the memory.
    Attachment(std::string_view name, std::string description, std::filesystem::path folder);

    // Compresses the content and keeps it; throws FileError where there is no room for it. What came before stays then.
    void SetContent(std::string_view bytes);
    void SetContent(const InputFile& file);
    void SetCreated(std::int64_t seconds) { created_ = seconds; }
    void SetModified(std::int64_t seconds) { modified_ = seconds; }
    // What the keys of a folder's files begin with, see FolderPrefix.
    void SetKeyPrefix(std::string prefix) { keyPrefix_ = std::move(prefix); }

    const std::string& Name() const { return name_; }
    const std::string& Description() const { return description_; }
    const std::string& KeyPrefix() const { return keyPrefix_; }
    std::int64_t Created() const { return created_; }
    std::int64_t Modified() const { return modified_; }
    bool HasContent() const { return content_ != nullptr; }  // those without are not saved
    // Once it is part of the document's file nothing about it can be changed any more.
    bool IsSaved() const { return saved_; }
    void MarkSaved() {
        content_.reset();
        saved_ = true;
    }
    const Spool& Content() const { return *content_; }
    bool IsDeflated() const { return deflated_; }
    std::uint64_t Size() const { return size_; }  // of the file, without compression

private:
    void DeflatePieces(const std::function<void(const Sink& sink)>& pieces);

    std::string name_;
    std::string description_;
    std::filesystem::path folder_;
    std::string keyPrefix_;
    std::int64_t created_ = unknownTime;
    std::int64_t modified_ = unknownTime;
    std::unique_ptr<Spool> content_;
    bool deflated_ = false;
    std::uint64_t size_ = 0;
    bool saved_ = false;
};

// How the key of a file in that folder of the document's collection begins: empty for the root folder of a document
// that has no folders, nothing for a folder that does not exist. "/" is the root folder, "/Inbox/2024" one in one in
// it.
std::optional<std::string> FolderPrefix(Document& document, std::string_view path);

// A document with what is to be attached to it.
class EditableDocument {
public:
    EditableDocument(const std::filesystem::path& path, std::string_view password);

    // As it was loaded, or as it was when it was last saved over its own file. Throws where it can no longer be opened.
    const std::shared_ptr<Document>& Current();

    // Belongs to this document, and stays when it has been saved.
    Attachment& Add(std::string_view name, std::string description);
    bool FileInFolder(Attachment& attachment, std::string_view folderPath);

    // Writes the document with its new attachments to `path`. Over its own file, where nobody else may hold it then,
    // they are part of it from now on; for a copy elsewhere they stay to be saved. Throws FileError and PdfError; the
    // file that was at `path` is as it was then.
    void Save(const std::filesystem::path& path);

private:
    std::filesystem::path path_;
    std::string password_;
    std::shared_ptr<Document> document_;  // null: to be opened again
    std::vector<std::unique_ptr<Attachment>> attachments_;
};

// What a document has embedded.
struct ListedAttachment {
    std::string name;        // UTF-8
    std::int64_t size = -1;  // -1 for what it does not say
    std::int64_t created = unknownTime;
    std::int64_t modified = unknownTime;
};
// A document that turns out to be damaged is repaired. Throws PdfError where that does not help.
std::vector<ListedAttachment> ListAttachments(Document& document);

}  // namespace zavo::pdf
