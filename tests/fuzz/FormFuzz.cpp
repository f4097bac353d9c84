// Parameters built from the bytes through the HTTP request's encodings, with nothing sent: the
// query of a GET, the form or multipart body of a POST, the JSON body of a PUT. Each encoding
// takes exactly the kinds it allows, and what it writes can be read back as what it was given:
// the form's values escaped to the safe characters, the multipart body split at its boundary
// into one part per parameter.
#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "FuzzInput.h"
#include "FuzzTargets.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/URL.h"
#include "velmo/net/VPHTTPRequest.h"

namespace velmo {

// Runs a request's encoding of its parameters and gives the request as it then stands.
struct VPHTTPRequestEncodingProbe {
    static URLRequest encode(VPHTTPRequest& request, const Value& parameters) {
        request.addParametersToRequest(parameters);
        return request.operationRequest();
    }
};

} // namespace velmo

namespace velmo::fuzz {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kAddress = "http://127.0.0.1:9/upload";
const std::string kDelimiter = std::string("--") + kVPHTTPRequestBoundary;

bool fail(std::string_view encoding, std::string_view why, std::string_view text = {}) {
    std::cerr << "form: " << encoding << ": " << why;
    if (!text.empty()) std::cerr << "\n  " << text.substr(0, 400);
    std::cerr << '\n';
    return false;
}

// A file for a URL parameter, its content from the input.
std::shared_ptr<URL> fileWithContent(std::string_view content, unsigned index) {
    const fs::path folder = fuzzWorkFolder() / "form";
    fs::create_directories(folder);
    const fs::path file = folder / ("part" + std::to_string(index) + ".bin");
    std::ofstream(file, std::ios::binary | std::ios::trunc)
        .write(content.data(), static_cast<std::streamsize>(content.size()));
    return URL::fileURLWithPath(file);
}

// What the generator has made so far: each file of a URL parameter gets a name of its own.
struct Made {
    unsigned files = 0;
};

Value makeValue(FuzzInput& in, Made& made, int depth);

Value makeContainer(FuzzInput& in, Made& made, int depth, bool dictionary) {
    const unsigned count = in.choice(depth == 0 ? 9 : 4);
    if (dictionary) {
        Dictionary d = Dictionary::create(count);
        for (unsigned i = 0; i < count; ++i) {
            std::string key = in.bytes(12);
            d.set(key, makeValue(in, made, depth + 1));
        }
        return Value(d);
    }
    Array a = Array::create(count);
    for (unsigned i = 0; i < count; ++i)
        a.push_back(makeValue(in, made, depth + 1));
    return Value(a);
}

Value makeValue(FuzzInput& in, Made& made, int depth) {
    static const std::string_view kImageHeads[] = {"", "\xFF\xD8\xFF\xE0", "GIF", "\x89PNG"};
    switch (in.choice(12)) {
    case 0:
    case 1:
    case 2:
        return Value(in.bytes(48));
    case 3:
        return Value(static_cast<long long>(in.word()));
    case 4:
        return Value(static_cast<unsigned long long>(in.word()));
    case 5: {
        const std::uint64_t bits = in.word();
        double d;
        std::memcpy(&d, &bits, sizeof d);
        return Value(d);
    }
    case 6:
        return Value(in.flag());
    case 7: {
        std::string bytes(kImageHeads[in.choice(4)]);
        bytes += in.bytes(48);
        return Value::bytes(bytes);
    }
    case 8:
        switch (in.choice(3)) {
        case 0:
            return Value(std::static_pointer_cast<Object>(fileWithContent(in.bytes(48), made.files++)));
        case 1:
            return Value(
                std::static_pointer_cast<Object>(URL::fileURLWithPath(fuzzWorkFolder() / "missing.bin")));
        default:
            return Value(
                std::static_pointer_cast<Object>(URL::URLWithString("https://example.com/a/picture.png")));
        }
    case 9:
        return Value::null();
    default:
        if (depth >= 3) return Value(in.bytes(8));
        return makeContainer(in, made, depth, in.flag());
    }
}

bool isURL(const Value& value) {
    return value.isObject() && value.objectAs<URL>() != nullptr;
}

bool plain(const Value& value) {
    return value.isString() || value.isNumber();
}

// Runs one encoding; false when it refused with the invalid-argument failure.
bool encode(VPHTTPRequestMethod method, bool json, const Value& parameters, URLRequest& request) {
    auto operation = std::make_shared<VPHTTPRequest>(kAddress, method, parameters, nullptr);
    operation->setSendParametersAsJSON(json);
    try {
        request = VPHTTPRequestEncodingProbe::encode(*operation, parameters);
        return true;
    } catch (const std::invalid_argument&) {
        return false;
    }
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Checks "key=value&..." against the parameters: keys as given, string values escaped to
// letters, digits, "-._" and upper-case %XX and reading back the same. Keys aren't escaped, so a
// key holding "&" or "=" leaves the pairs ambiguous: then only the values' alphabet is checked.
bool checkParameterString(std::string_view encoding, const Dictionary& parameters, std::string_view text) {
    bool ambiguous = false;
    for (const auto& entry : parameters)
        ambiguous = ambiguous || entry.key.stringView().find_first_of("&=") != std::string_view::npos;
    if (parameters.empty()) return text.empty() || fail(encoding, "text for no parameters", text);
    if (ambiguous) return true;
    std::size_t at = 0;
    for (const auto& entry : parameters) {
        const std::size_t end = std::min(text.find('&', at), text.size());
        const std::string_view pair = text.substr(at, end - at);
        const std::size_t equals = pair.find('=');
        if (equals == std::string_view::npos || pair.substr(0, equals) != entry.key.stringView())
            return fail(encoding, "a pair that doesn't start with its key", pair);
        const std::string_view escaped = pair.substr(equals + 1);
        if (entry.value.isString()) {
            std::string decoded;
            for (std::size_t i = 0; i < escaped.size(); ++i) {
                const char c = escaped[i];
                if (c == '%') {
                    if (i + 2 >= escaped.size()) return fail(encoding, "a cut escape", escaped);
                    const int high = hexDigit(escaped[i + 1]);
                    const int low = hexDigit(escaped[i + 2]);
                    if (high < 0 || low < 0) return fail(encoding, "a bad escape", escaped);
                    decoded += static_cast<char>(high * 16 + low);
                    i += 2;
                } else if (std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '.' || c == '_') {
                    decoded += c;
                } else {
                    return fail(encoding, "a character left unescaped", escaped);
                }
            }
            if (decoded != entry.value.stringView())
                return fail(encoding, "a value that reads back otherwise", escaped);
        } else if (escaped != entry.value.description()) {
            return fail(encoding, "a number not written as described", escaped);
        }
        at = end + 1;
    }
    if (at != text.size() + 1) return fail(encoding, "more pairs than parameters", text);
    return true;
}

// Splits the multipart body at its delimiters and checks each part against its parameter.
bool checkMultipart(const Dictionary& parameters, std::string_view body) {
    constexpr std::string_view kEncoding = "multipart";
    // Keys aren't quoted, and content holding the delimiter can't be told from it: such input
    // is taken as given, and only the closing line is checked.
    bool ambiguous = false;
    for (const auto& entry : parameters) {
        const std::string_view key = entry.key.stringView();
        ambiguous = ambiguous || key.find_first_of("\"\r\n") != std::string_view::npos ||
                    key.find(kDelimiter) != std::string_view::npos;
        if (entry.value.isString())
            ambiguous = ambiguous || entry.value.stringView().find(kDelimiter) != std::string_view::npos;
        if (entry.value.isBytes())
            ambiguous = ambiguous || entry.value.bytesView().find(kDelimiter) != std::string_view::npos;
        if (isURL(entry.value)) {
            const auto url = entry.value.objectAs<URL>();
            ambiguous = ambiguous || url->lastPathComponent().find_first_of("\"\r\n") != std::string::npos;
            if (url->isFileURL()) {
                std::ifstream in(url->path(), std::ios::binary);
                const std::string content((std::istreambuf_iterator<char>(in)), {});
                ambiguous = ambiguous || content.find(kDelimiter) != std::string::npos;
            }
        }
    }
    const std::string closing = kDelimiter + "--\r\n";
    if (!body.ends_with(closing)) return fail(kEncoding, "no closing delimiter", body);
    if (ambiguous) return true;

    std::size_t at = 0;
    int fileIndex = 0;
    for (const auto& entry : parameters) {
        const std::string opening = kDelimiter + "\r\n";
        if (body.substr(at, opening.size()) != opening)
            return fail(kEncoding, "a part without its delimiter", body.substr(at));
        at += opening.size();
        const std::size_t headEnd = body.find("\r\n\r\n", at);
        if (headEnd == std::string_view::npos)
            return fail(kEncoding, "a part without the end of its head", body.substr(at));
        const std::string_view head = body.substr(at, headEnd - at);
        at = headEnd + 4;
        const std::size_t next = body.find("\r\n" + kDelimiter, at);
        if (next == std::string_view::npos) return fail(kEncoding, "a part without an end", body.substr(at));
        const std::string_view content = body.substr(at, next - at);
        at = next + 2;

        const std::string key(entry.key.stringView());
        const Value& value = entry.value;
        if (plain(value)) {
            if (head != "Content-Disposition: form-data; name=\"" + key + "\"")
                return fail(kEncoding, "a field's head", head);
            const std::string expected =
                value.isString() ? std::string(value.stringView()) : value.description();
            if (content != expected) return fail(kEncoding, "a field's content", content);
            continue;
        }
        std::string fileName;
        std::string type = "application/octet-stream";
        std::string expected;
        if (isURL(value)) {
            const auto url = value.objectAs<URL>();
            fileName = url->lastPathComponent();
            if (url->isFileURL()) {
                std::ifstream in(url->path(), std::ios::binary);
                expected.assign(std::istreambuf_iterator<char>(in), {});
            }
        } else {
            expected = std::string(value.bytesView());
            const std::string_view extension = VPHTTPRequest::imageType(expected);
            if (!extension.empty()) type = "image/" + std::string(extension);
            const std::string prefix = "userfile" + std::to_string(fileIndex);
            const std::size_t nameAt = head.find("filename=\"");
            const std::string_view named =
                nameAt == std::string_view::npos ? std::string_view() : head.substr(nameAt + 10);
            const std::size_t nameEnd = named.find('"');
            fileName = std::string(named.substr(0, nameEnd == std::string_view::npos ? 0 : nameEnd));
            const bool extensionOk =
                extension.empty() ? fileName.find('.') == std::string::npos
                                  : (fileName.size() > extension.size() && fileName.ends_with(extension) &&
                                     fileName[fileName.size() - extension.size() - 1] == '.');
            if (!fileName.starts_with(prefix) || !extensionOk)
                return fail(kEncoding, "a data part's file name", head);
        }
        ++fileIndex;
        if (head != "Content-Disposition: attachment; name=\"" + key + "\"; filename=\"" + fileName +
                        "\"\r\nContent-Type: " + type)
            return fail(kEncoding, "a file part's head", head);
        if (content != expected) return fail(kEncoding, "a file part's content", content);
    }
    if (body.substr(at) != closing) return fail(kEncoding, "more parts than parameters", body.substr(at));
    return true;
}

bool checkQuery(const Value& parameters) {
    URLRequest request;
    const bool allowed = parameters.isDictionary() && [&] {
        for (const auto& entry : parameters.dictionary())
            if (!plain(entry.value)) return false;
        return true;
    }();
    if (encode(VPHTTPRequestMethod::GET, false, parameters, request) != allowed)
        return fail("query", allowed ? "refused plain parameters" : "took what a query can't hold");
    if (!allowed) return true;
    if (parameters.dictionary().empty())
        return request.url == kAddress || fail("query", "changed the address", request.url);
    const std::string start = std::string(kAddress) + "?";
    if (!request.url.starts_with(start)) return fail("query", "not after a \"?\"", request.url);
    return checkParameterString("query", parameters.dictionary(),
                                std::string_view(request.url).substr(start.size()));
}

bool checkBody(const Value& parameters) {
    URLRequest request;
    bool allowed = parameters.isDictionary();
    bool multipart = false;
    if (allowed) {
        for (const auto& entry : parameters.dictionary()) {
            multipart = multipart || entry.value.isBytes() || isURL(entry.value);
            allowed = allowed && (plain(entry.value) || entry.value.isBytes() || isURL(entry.value));
        }
    }
    if (encode(VPHTTPRequestMethod::POST, false, parameters, request) != allowed)
        return fail("body", allowed ? "refused allowed parameters" : "took what a form can't hold");
    if (!allowed) return true;
    const std::string type = request.valueForHTTPHeaderField("Content-Type");
    if (!multipart) {
        if (type != "application/x-www-form-urlencoded") return fail("form", "content type", type);
        return checkParameterString("form", parameters.dictionary(), request.body);
    }
    if (type != std::string("multipart/form-data; boundary=") + kVPHTTPRequestBoundary)
        return fail("multipart", "content type", type);
    return checkMultipart(parameters.dictionary(), request.body);
}

bool checkJson(const Value& parameters) {
    URLRequest request;
    const bool allowed =
        (parameters.isDictionary() || parameters.isArray()) && Json::isValidJSONObject(parameters);
    if (encode(VPHTTPRequestMethod::PUT, true, parameters, request) != allowed)
        return fail("json", allowed ? "refused what JSON holds" : "took what JSON can't hold");
    if (!allowed) return true;
    if (request.valueForHTTPHeaderField("Content-Type") != "application/json")
        return fail("json", "content type", request.valueForHTTPHeaderField("Content-Type"));
    const Value read = Json::tryParse(request.body);
    if (!(read == parameters)) return fail("json", "a body that reads back otherwise", request.body);
    return true;
}

} // namespace

bool fuzzForm(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    Made made;
    const Value parameters = makeContainer(in, made, 0, in.choice(8) != 0);
    return checkQuery(parameters) && checkBody(parameters) && checkJson(parameters);
}

} // namespace velmo::fuzz
