#include "support/DocumentGenerator.h"

#include <array>
#include <random>
#include <vector>

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

class AppWriter : Writer {
public:
    explicit AppWriter(const AppShape& shape) : shape_(shape) {}

    std::string document() {
        out_ += fmt::format(
            R"({{"model_class":"VDModelApp","model_version":0,"modelID":"app_{}","appVersion":"3.2",)"
            R"("client_version":"1.9.0","client_id":"velmo-editor","name":"Benchmark Shop",)"
            R"("ownerName":"Ada Lovelace","appID":"5d1c0b7e9a2f","ownerID":"user_4711","codeLanguage":1,)"
            R"("lastKnownFilePath":"/Users/ada/Designs/shop.sketch","sketchPageID":"{}",)"
            R"("swipeScreensDisabled":0,"uniqueVarsPerScreen":0,"isComponent":0,"isPrivate":1,)",
            uuid(), uuid());
        out_ +=
            fmt::format(R"("theme":{{"model_class":"VDModelTheme","model_version":0,"modelID":"theme_{}",)"
                        R"("name":"Default Theme","statusbarType":0,"fonts":["Inter","Roboto Mono"],)"
                        R"("recentFonts":["Inter"],"globalColors":[)",
                        uuid());
        for (int i = 0; i < 8; ++i) {
            if (i) out_ += ',';
            out_ += fmt::format(
                R"({{"model_class":"VDModelColor","model_version":0,"red":{},"green":{},"blue":{},"alpha":1}})",
                fraction(), fraction(), fraction());
        }
        out_ += fmt::format(
            R"(]}},"links":{{"model_class":"VDModelAppLinks","model_version":0,"modelID":"appLinks_{}"}},)",
            uuid());
        out_ += R"("screens":[)";
        for (std::size_t s = 1; s <= shape_.screens; ++s) {
            if (s > 1) out_ += ',';
            screen(s);
        }
        out_ += R"(],"views":[)";
        for (int i = 0; i < 2; ++i) {
            if (i) out_ += ',';
            const std::size_t id = ++written_;
            viewFields(id, fmt::format("sticker{}", id), fmt::format("Sticker {}", id));
            out_ += R"("actions":[],"subviews":[]})";
        }
        out_ += R"(],"similarScreenIds":[)";
        for (std::size_t s = 1; s + 1 <= shape_.screens && s < 20; s += 2)
            out_ += fmt::format(R"({}["screen_{}","screen_{}"])", s > 1 ? "," : "", s, s + 1);
        out_ += "]}";
        return std::move(out_);
    }

private:
    struct Touch {
        std::size_t path;
        std::string values;
    };

    std::string uuid() {
        std::uniform_int_distribution<std::uint64_t> bits;
        const std::uint64_t a = bits(random_), b = bits(random_);
        return fmt::format("{:08x}-{:04x}-4{:03x}-{:04x}-{:012x}", a >> 32, (a >> 16) & 0xffff, a & 0xfff,
                           0x8000 | ((b >> 48) & 0x3fff), b & 0xffffffffffffULL);
    }

    void screen(std::size_t n) {
        paths_.clear();
        out_ += fmt::format(
            R"({{"model_class":"VDModelScreen","model_version":0,"modelID":"screen_{}","variableID":"screen{}",)"
            R"("viewName":"Screen: Page {}","title":"Page {}","userChangedViewName":0,"isAppRoot":{},)"
            R"("isSelectedInEditor":0,"statusBarType":0,"navBehaviour":2,"selectedBreakpoint":0,)"
            R"("exportCacheKey":"{}","imageFilenames":["screen_{}@2x.png"],)"
            R"("x":0,"y":0,"width":375,"height":812,"alpha":1,"hidden":0,"defaultStateName":"",)",
            n, n, n, n, n == 1 ? 1 : 0, uuid(), n);
        color("color");
        out_ += R"(,"subviews":[)";
        budget_ = written_ + shape_.viewsPerScreen;
        subviews(1, "this");
        out_ += R"(],"states":[)";
        // Each state changes every tenth view, the two at different views.
        std::array<std::vector<Touch>, 2> states;
        for (std::size_t p = 0; p < paths_.size(); ++p) {
            if (p % 10 == 0) {
                states[0].push_back(
                    {p, fmt::format(R"("x":{},"y":{},"alpha":{})", number(), number(), fraction())});
            } else if (p % 10 == 5) {
                states[1].push_back({p, fmt::format(R"("width":{},"height":{},"cornersRadius":{})", number(),
                                                    number(), number() / 100)});
            }
        }
        const std::array<const char*, 2> names = {"compact", "expanded"};
        for (std::size_t s = 0; s < 2; ++s) {
            if (s) out_ += ',';
            out_ += fmt::format(
                R"({{"model_class":"VDModelViewState","model_version":0,"name":"{}","overrides":{{)",
                names[s]);
            for (std::size_t i = 0; i < states[s].size(); ++i)
                out_ += fmt::format(R"({}"{}":{{{}}})", i ? "," : "", paths_[states[s][i].path],
                                    states[s][i].values);
            out_ += "}}";
        }
        out_ += R"(],"actions":[)";
        // The initial look to "compact": its paths; "compact" to "expanded": the paths of both,
        // where what only "compact" changed goes back to the view's own values.
        transition(nullptr, names[0], "click", states[0], {});
        out_ += ',';
        transition(names[0], names[1], "mouseenter", states[1], states[0]);
        out_ += "]}";
    }

    void transition(const char* origin, const char* target, const char* event, const std::vector<Touch>& to,
                    const std::vector<Touch>& back) {
        const std::size_t id = ++transitions_;
        out_ += fmt::format(
            R"({{"model_class":"VDModelActionScriptAnimation","model_version":0,"modelID":"Transition_{}",)"
            R"("name":"Transition {}","trigger":0,"delayFromTrigger":0,{}"targetStateName":"{}",)"
            R"("listeners":[{{"model_class":"VDModelEventListener","model_version":0,)"
            R"("modelID":"eventListener_{}","event":"{}","target":"{}","timerMS":0}}],"timelines":[)",
            id, id, origin ? fmt::format(R"("originStateName":"{}",)", origin) : "", target, uuid(), event,
            paths_.empty() ? "this" : paths_.front());
        bool first = true;
        for (const auto* list : {&to, &back}) {
            for (const Touch& touch : *list) {
                if (!first) out_ += ',';
                first = false;
                const std::string values =
                    list == &to
                        ? touch.values
                        : fmt::format(R"("width":{},"height":{},"cornersRadius":0)", number(), number());
                out_ += fmt::format(
                    R"({{"model_class":"VDModelAnimationTimeline","model_version":0,"modelID":"animationTimeline_{}",)"
                    R"("target":"{}","animations":[{{"model_class":"VDModelAnimation","model_version":0,)"
                    R"("modelID":"animation_{}","delay":0,"duration":0.3,"curve":"ease-in-out",)"
                    R"("cubicBezier":".42;0;.58;1","state":{{{}}}}}]}})",
                    uuid(), paths_[touch.path], uuid(), values);
            }
        }
        out_ += "]}";
    }

    // Depth first, `fanOut` to a view, until the screen's views are written.
    void subviews(std::size_t level, const std::string& path) {
        static constexpr std::array<const char*, 8> kinds = {"header", "title",  "card",   "icon",
                                                             "button", "avatar", "footer", "badge"};
        for (std::size_t i = 0; i < shape_.fanOut && written_ < budget_; ++i) {
            if (i) out_ += ',';
            const std::size_t id = ++written_;
            const std::string name = fmt::format("{}{}", kinds[id % kinds.size()], id);
            const std::string childPath = path + ";" + name;
            paths_.push_back(childPath);
            viewFields(id, name, fmt::format("{} {}", kinds[id % kinds.size()], id));
            out_ += R"("actions":[],"subviews":[)";
            if (level < shape_.depth) subviews(level + 1, childPath);
            out_ += "]}";
        }
    }

    AppShape shape_;
    std::size_t budget_ = 0;
    std::size_t transitions_ = 0;
    /// The current screen's views as paths relative to it, in the order written.
    std::vector<std::string> paths_;
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

std::string generateAppJson(const AppShape& shape) {
    return AppWriter(shape).document();
}

} // namespace velmo::bench
