// The engine's only use of qpdf, which repairs and decrypts. It recurses with the document's depth, so all of it runs
// on a thread with a large stack.
#include "engine/Normalise.h"

#include <chrono>
#include <cstddef>
#include <exception>
#include <memory>
#include <new>
#include <qpdf/Buffer.hh>
#include <qpdf/BufferInputSource.hh>
#include <qpdf/Pl_Flate.hh>
#include <qpdf/Pl_Function.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFEmbeddedFileDocumentHelper.hh>
#include <qpdf/QPDFFileSpecObjectHelper.hh>
#include <qpdf/QPDFLogger.hh>
#include <qpdf/QPDFNameTreeObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>
#include <set>
#include <stdexcept>
#include <utility>

#include "engine/AttachmentNames.h"
#include "engine/Dates.h"
#include "engine/LargeStack.h"

namespace zavo::pdf {

namespace {

// qpdf takes exceptions of callbacks for damage of the document, or ends the program when they come while it tidies up.
// So they wait here, and no callback is called after the first.
class HeldException {
public:
    template <typename Work>
    void Guard(const Work& work) noexcept {
        if (exception_) return;
        try {
            work();
        } catch (...) {
            exception_ = std::current_exception();
        }
    }

    void Throw() const {
        if (exception_) std::rethrow_exception(exception_);
    }

private:
    std::exception_ptr exception_;
};

// How many bytes qpdf may read and write for a document of these: files can be made to be read and copied again and
// again.
std::uint64_t WorkLimit(std::string_view bytes) { return (std::uint64_t{64} << 20) + 64 * std::uint64_t{bytes.size()}; }

// What qpdf's view of the bytes is; it does not write to them.
struct InputBytes {
    explicit InputBytes(std::string_view bytes)
        : memory(reinterpret_cast<unsigned char*>(const_cast<char*>(bytes.data())), bytes.size()) {}
    ::Buffer memory;
};

// The document. qpdf reads one object while it reads another where the length of a stream is a reference; a chain of
// such streams that uses up the stack ends here, as damage. So does a file that is read again and again.
class Input : private InputBytes, public BufferInputSource {
public:
    explicit Input(std::string_view bytes)
        : InputBytes(bytes),
          BufferInputSource("PDF", &memory),
          toRead_(WorkLimit(bytes)),
          end_(std::chrono::steady_clock::now() + TimeLimit(bytes)) {
        const volatile char here = 0;
        start_ = reinterpret_cast<std::intptr_t>(&here);
    }

    std::size_t read(char* target, std::size_t size) override {
        const std::size_t count = BufferInputSource::read(target, size);
        if (count > toRead_ || std::chrono::steady_clock::now() > end_) {
            throw PdfError("the file is made to be read without an end");
        }
        toRead_ -= count;
        return count;
    }

    void seek(qpdf_offset_t offset, int whence) override {
        constexpr std::intptr_t deepest = largeStackSize / 2;
        const volatile char here = 0;
        if (start_ - reinterpret_cast<std::intptr_t>(&here) > deepest) {
            throw PdfError("the lengths of too many streams depend on each other");
        }
        BufferInputSource::seek(offset, whence);
    }

private:
    // What qpdf unpacks it does not tell; so it has a time as well, many times what any file that is meant well takes.
    static std::chrono::seconds TimeLimit(std::string_view bytes) {
        constexpr std::uint64_t bytesPerSecond = std::uint64_t{512} << 10;
        return std::chrono::seconds(10 + bytes.size() / bytesPerSecond);
    }

    std::intptr_t start_ = 0;  // where the stack was; it falls with each call
    std::uint64_t toRead_;
    std::chrono::steady_clock::time_point end_;
};

// Runs work with qpdf; what qpdf throws becomes a PdfError.
void RunQpdf(HeldException& held, const std::function<void()>& work) {
    RunWithLargeStack([&] {
        try {
            work();
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const std::exception& error) {
            held.Throw();
            throw PdfError(error.what());
        }
    });
    held.Throw();
}

// What qpdf has once for all documents. What it cannot tell a document's logger, because it does not know whose object
// it is, it tells the default one.
void SetUpQpdf() {
    static const bool once = [] {
        constexpr unsigned long long unpackedLimit = 128ULL << 20;  // of one object stream
        Pl_Flate::memory_limit(unpackedLimit);
        const std::shared_ptr<QPDFLogger> logger = QPDFLogger::defaultLogger();
        logger->setError(logger->discard());
        return true;
    }();
    static_cast<void>(once);
}

void Open(QPDF& pdf, std::string_view bytes, std::string_view password) {
    // Each stream of a wrong length gives three, and costs a walk over all objects.
    constexpr std::size_t maxWarnings = 5000;
    SetUpQpdf();
    const std::shared_ptr<QPDFLogger> silent = QPDFLogger::create();
    silent->setInfo(silent->discard());
    silent->setWarn(silent->discard());
    silent->setError(silent->discard());
    pdf.setLogger(silent);
    pdf.setSuppressWarnings(true);
    pdf.setMaxWarnings(maxWarnings);
    pdf.processInputSource(std::make_shared<Input>(bytes), std::string(password).c_str());
    if (pdf.getAllPages().empty()) throw PdfError("a PDF without pages");

    // The writer replaces the value, and leaves out what was not there, as in a file that lost its trailer.
    pdf.getTrailer().replaceKey("/Size", QPDFObjectHandle::newInteger(0));

    // The writer would unpack this stream, whatever it is told about streams.
    QPDFObjectHandle metadata = pdf.getRoot().getKey("/Metadata");
    if (metadata.isStream()) metadata.setFilterOnWrite(false);
}

// Writes with all streams as they are.
void Write(QPDFWriter& writer, const Sink& sink, HeldException& held) {
    Pl_Function output("output", nullptr, [&](const unsigned char* bytes, std::size_t count) {
        held.Guard([&] { sink({reinterpret_cast<const char*>(bytes), count}); });
    });
    writer.setOutputPipeline(&output);
    writer.setDecodeLevel(qpdf_dl_none);
    writer.setCompressStreams(false);
    writer.write();
}

// "name.ext", or "name (2).ext" where there is one already, and so on.
std::string UniqueKey(const std::set<std::string>& taken, const std::string& prefix, const std::string& name) {
    std::string key = prefix + name;
    for (unsigned number = 2; taken.count(key) > 0; ++number) key = prefix + NumberedFileName(name, number);
    return key;
}

QPDFObjectHandle MakeContent(QPDF& pdf, const QpdfAttachment& attachment, HeldException& held) {
    QPDFObjectHandle params = QPDFObjectHandle::newDictionary();
    params.replaceKey("/Size", QPDFObjectHandle::newInteger(static_cast<long long>(attachment.size)));
    if (!attachment.md5.empty()) params.replaceKey("/CheckSum", QPDFObjectHandle::newString(attachment.md5));
    const std::string created = DateText(attachment.created);
    if (!created.empty()) params.replaceKey("/CreationDate", QPDFObjectHandle::newString(created));
    const std::string modified = DateText(attachment.modified);
    if (!modified.empty()) params.replaceKey("/ModDate", QPDFObjectHandle::newString(modified));

    QPDFObjectHandle stream = pdf.newStream();
    stream.getDict().replaceKey("/Type", QPDFObjectHandle::newName("/EmbeddedFile"));
    if (!attachment.mimeType.empty()) {
        stream.getDict().replaceKey("/Subtype", QPDFObjectHandle::newName("/" + attachment.mimeType));
    }
    stream.getDict().replaceKey("/Params", params);
    const auto provide = [&content = attachment.content, &held](Pipeline* pipeline) {
        held.Guard([&] {
            content([pipeline](std::string_view bytes) {
                pipeline->write(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
            });
        });
        pipeline->finish();
    };
    stream.replaceStreamData(
        provide, attachment.deflated ? QPDFObjectHandle::newName("/FlateDecode") : QPDFObjectHandle::newNull(),
        QPDFObjectHandle::newNull());
    stream.setFilterOnWrite(false);
    return stream;
}

QPDFFileSpecObjectHelper MakeFileSpec(QPDF& pdf, const QpdfAttachment& attachment, HeldException& held) {
    const QPDFObjectHandle content = MakeContent(pdf, attachment, held);
    QPDFObjectHandle files = QPDFObjectHandle::newDictionary();
    files.replaceKey("/F", content);
    files.replaceKey("/UF", content);
    QPDFObjectHandle spec = pdf.makeIndirectObject(QPDFObjectHandle::newDictionary());
    spec.replaceKey("/Type", QPDFObjectHandle::newName("/Filespec"));
    spec.replaceKey("/F", QPDFObjectHandle::newString(AsciiName(attachment.name)));
    spec.replaceKey("/UF", QPDFObjectHandle::newUnicodeString(attachment.name));
    if (!attachment.description.empty()) {
        spec.replaceKey("/Desc", QPDFObjectHandle::newUnicodeString(attachment.description));
    }
    spec.replaceKey("/EF", files);
    return {spec};
}

// A tree with damaged nodes takes new files without keeping them, or none at all: a tree of the files that are found in
// it takes its place.
void RepairAttachmentTree(QPDF& pdf) {
    QPDFObjectHandle names = pdf.getRoot().getKey("/Names");
    if (!names.isDictionary() || !names.hasKey("/EmbeddedFiles")) return;
    std::vector<std::pair<std::string, QPDFObjectHandle>> files;
    try {
        for (const auto& [key, file] : QPDFNameTreeObjectHelper(names.getKey("/EmbeddedFiles"), pdf)) {
            files.emplace_back(key, file);
        }
    } catch (const std::runtime_error&) {
        // What comes behind the damage is not to be had.
    }
    names.removeKey("/EmbeddedFiles");
    QPDFEmbeddedFileDocumentHelper tree(pdf);
    for (const auto& [key, file] : files) tree.replaceEmbeddedFile(key, QPDFFileSpecObjectHelper(file));
}

void AddAttachments(QPDF& pdf, const std::vector<QpdfAttachment>& attachments, HeldException& held) {
    RepairAttachmentTree(pdf);
    QPDFEmbeddedFileDocumentHelper tree(pdf);
    std::set<std::string> taken;
    for (const auto& [key, file] : tree.getEmbeddedFiles()) taken.insert(key);
    for (const QpdfAttachment& attachment : attachments) {
        const std::string key = UniqueKey(taken, attachment.treeKeyPrefix, attachment.name);
        tree.replaceEmbeddedFile(key, MakeFileSpec(pdf, attachment, held));
        taken.insert(key);
    }
}

}  // namespace

std::string Normalise(std::string_view bytes, std::string_view password) {
    std::string normal;
    normal.reserve(bytes.size());
    HeldException held;
    const auto normalise = [&] {
        QPDF pdf;
        Open(pdf, bytes, password);
        QPDFWriter writer(pdf);
        writer.setPreserveEncryption(false);
        writer.setObjectStreamMode(qpdf_o_disable);
        writer.setDeterministicID(true);
        const auto keep = [&](std::string_view piece) {
            if (normal.size() + piece.size() > WorkLimit(bytes))
                throw PdfError("the file repeats itself without an end");
            normal += piece;
        };
        Write(writer, keep, held);
    };
    try {
        RunQpdf(held, normalise);
    } catch (const PdfError&) {
        // What qpdf says of a picture or a text is of no use.
        constexpr std::size_t headerLimit = 1024;
        if (bytes.substr(0, headerLimit).find("%PDF-") == std::string_view::npos) throw PdfError("this is not a PDF");
        throw;
    }
    return normal;
}

void RewriteWithAttachments(std::string_view bytes, std::string_view password,
                            const std::vector<QpdfAttachment>& attachments, const Sink& sink) {
    HeldException held;
    RunQpdf(held, [&] {
        QPDF pdf;
        Open(pdf, bytes, password);
        AddAttachments(pdf, attachments, held);
        QPDFWriter writer(pdf);
        // A writer that leaves streams alone drops encryption, unless it is told so.
        if (pdf.isEncrypted()) writer.copyEncryptionParameters(pdf);
        // The file's identifier comes from its content, but for encryption, which depends on the identifier.
        writer.setDeterministicID(!pdf.isEncrypted());
        Write(writer, sink, held);
    });
}

}  // namespace zavo::pdf
