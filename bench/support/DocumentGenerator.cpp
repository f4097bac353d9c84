#include "support/DocumentGenerator.h"

#include <random>

#include <fmt/format.h>

namespace velmo::bench {

namespace {

class Writer {
public:
    Writer(const DocumentShape& shape) : shape_(shape), random_(42) {}

    std::string document() {
        out_ += R"({"model_class":"VDModelApp","model_version":0,"modelID":"app_1","name":"Benchmark","screens":[)";
        std::size_t screen = 0;
        while (written_ < shape_.views) {
            if (screen++) out_ += ',';
            view(1, "VDModelScreen");
        }
        out_ += "]}";
        return std::move(out_);
    }

private:
    double number() { return std::uniform_int_distribution<int>(0, 4000)(random_) / 4.0; }
    float fraction() { return std::uniform_int_distribution<int>(0, 255)(random_) / 255.0f; }

    void color(const char* key) {
        out_ += fmt::format(R"("{}":{{"model_class":"VDModelColor","model_version":0,"red":{},"green":{},"blue":{},"alpha":1}})",
                            key, fraction(), fraction(), fraction());
    }

    void view(std::size_t level, const char* cls) {
        const std::size_t id = ++written_;
        out_ += fmt::format(R"({{"model_class":"{}","model_version":0,"modelID":"view_{}","variableID":"view{}",)"
                            R"("viewName":"View {}","frame":{{"model_class":"VDModelFrame","model_version":0,)"
                            R"("x":{},"y":{},"width":{},"height":{}}},"alpha":1,"hidden":0,"cornerRadius":{},)",
                            cls, id, id, id, number(), number(), number(), number(), number() / 100);
        color("backgroundColor");
        out_ += ',';
        color("tintColor");
        out_ += fmt::format(R"(,"specsInfo":{{"model_class":"VDModelSpecsInfo","model_version":0,"borders":[],)"
                            R"("fills":[{{"type":"color","opacity":{}}}],"assets":{{"png":"assets/view_{}.png"}}}},)",
                            fraction(), id);
        out_ += R"("constraints":{"model_class":"VDModelViewConstraints","model_version":0,"top":{"model_class":"VDModelConstraint","model_version":0,"value":8,"enabled":1},"left":{"model_class":"VDModelConstraint","model_version":0,"value":16,"enabled":1}},)";
        out_ += fmt::format(R"("tags":["generated","level{}"],"subviews":[)", level);
        if (level < shape_.depth) {
            for (std::size_t i = 0; i < shape_.fanOut && written_ < shape_.views; ++i) {
                if (i) out_ += ',';
                view(level + 1, "VDModelView");
            }
        }
        out_ += "]}";
    }

    DocumentShape shape_;
    std::mt19937 random_;
    std::string out_;
    std::size_t written_ = 0;
};

} // namespace

std::string generateDocumentJson(const DocumentShape& shape) { return Writer(shape).document(); }

std::string generateDocumentJsonOfSize(std::size_t bytes) {
    // About 900 bytes a view.
    DocumentShape shape;
    shape.views = bytes / 900 + 1;
    return generateDocumentJson(shape);
}

} // namespace velmo::bench
