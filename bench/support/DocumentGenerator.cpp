#include "support/DocumentGenerator.h"

#include <random>

#include <fmt/format.h>

namespace velmo::bench {

namespace {

/// What both shapes write the same way: numbers, colours and the fields of one view.
class Writer {
protected:
    Writer() : random_(42) {}

    double number() { return std::uniform_int_distribution<int>(0, 4000)(random_) / 4.0; }
    float fraction() { return std::uniform_int_distribution<int>(0, 255)(random_) / 255.0f; }

    void color(const char* key) {
        out_ += fmt::format(R"("{}":{{"model_class":"VDModelColor","model_version":0,"red":{},"green":{},)"
                            R"("blue":{},"alpha":1}})",
                            key, fraction(), fraction(), fraction());
    }

    /// A view's opening brace and every field up to its actions and subviews, which the caller
    /// writes, with the closing brace.
    void viewFields(std::size_t id, const std::string& variableID, const std::string& viewName) {
        out_ +=
            fmt::format(R"({{"model_class":"VDModelView","model_version":0,"modelID":"View_{}",)"
                        R"("variableID":"{}","viewName":"{}","sketchId":"5F3A-{}",)"
                        R"("x":{},"y":{},"width":{},"height":{},"alpha":1,"hidden":0,"cornersRadius":{},)",
                        id, variableID, viewName, id, number(), number(), number(), number(), number() / 100);
        color("color");
        out_ += ',';
        color("borderColor");
        out_ += fmt::format(
            R"(,"specsInfo":{{"model_class":"VDModelSpecsInfo","model_version":0,"borders":[],)"
            R"("fills":[{{"type":"color","opacity":{}}}],"assets":{{"png":"assets/view_{}.png"}}}},)",
            fraction(), id);
        out_ +=
            R"("constraints":{"model_class":"VDModelViewConstraints","model_version":0,"automatic":0,)"
            R"("top":{"model_class":"VDModelConstraint","model_version":0,"enabled":1,"multiplier":1,"constant":8},)"
            R"("left":{"model_class":"VDModelConstraint","model_version":0,"enabled":1,"multiplier":1,"constant":16}},)";
    }

    std::mt19937 random_;
    std::string out_;
    std::size_t written_ = 0;
};

class TreeWriter : Writer {
public:
    explicit TreeWriter(const DocumentShape& shape) : shape_(shape) {}

    std::string document() {
        out_ +=
            R"({"model_class":"VDModelView","model_version":0,"modelID":"View_document","viewName":"Document",)"
            R"("width":1440,"height":900,"subviews":[)";
        std::size_t screen = 0;
        while (written_ < shape_.views) {
            if (screen++) out_ += ',';
            view(1);
        }
        out_ += "]}";
        return std::move(out_);
    }

private:
    void view(std::size_t level) {
        const std::size_t id = ++written_;
        viewFields(id, fmt::format("view{}", id), fmt::format("View {}", id));
        out_ += R"("actions":[],"subviews":[)";
        if (level < shape_.depth) {
            for (std::size_t i = 0; i < shape_.fanOut && written_ < shape_.views; ++i) {
                if (i) out_ += ',';
                view(level + 1);
            }
        }
        out_ += "]}";
    }

    DocumentShape shape_;
};

} // namespace

std::string generateDocumentJson(const DocumentShape& shape) {
    return TreeWriter(shape).document();
}

std::string generateDocumentJsonOfSize(std::size_t bytes) {
    DocumentShape shape;
    shape.views = bytes / 1000 + 1; // about a kilobyte a view
    return generateDocumentJson(shape);
}

} // namespace velmo::bench
