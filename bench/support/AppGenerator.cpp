// The whole-document generator: a document as the editor saves it after an export, with every
// kind of view, components on every screen, and the shapes of older documents that the repairs
// exist for.
#include <algorithm>
#include <array>
#include <cctype>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "support/DocumentGenerator.h"

namespace velmo::bench {

namespace {

/// What a view starts with, before its class's own fields.
struct Head {
    const char* cls = "VDModelView";
    /// Its class's identifier prefix: views get short identifiers ("Label_12").
    const char* prefix = "View";
    std::string name;
    /// Layers the export left unnamed have none.
    std::optional<std::string> var;
    /// The layer's identifier in the design tool; a fresh one when empty. Layers of a component
    /// carry their master's, in every instance, which is what props and overrides target.
    std::string layer = {};
    /// A border the design tool placed centred or outside, on a box with constraints.
    bool border = false;
};

/// The layers of one master that its instances repeat, and so the targets of its props.
struct Master {
    std::string symbol;
    std::string title, image, price, badge, buttonLabel;
};

/// A path a state touches, relative to the view holding the state, and the values it sets.
struct Touch {
    std::string path;
    std::string values;
};

using Write = std::function<void()>;

class AppWriter {
public:
    explicit AppWriter(const AppShape& shape) : shape_(shape) {}

    std::string document() {
        masters_.resize(std::max<std::size_t>(3, shape_.screens / 10));
        for (Master& m : masters_)
            m = {layer(), layer(), layer(), layer(), layer(), layer()};
        put(R"({{"model_class":"VDModelApp","model_version":0,"modelID":"app_{}","appVersion":"3.2",)"
            R"("client_version":"1.9.0","client_id":"velmo-editor","name":"Benchmark Shop",)"
            R"("ownerName":"Ada Lovelace","appID":"5d1c0b7e9a2f","ownerID":"user_4711","codeLanguage":1,)"
            R"("lastKnownFilePath":"/Users/ada/Designs/shop.sketch","sketchPageID":"{}",)"
            R"("swipeScreensDisabled":0,"uniqueVarsPerScreen":0,"isComponent":0,"isPrivate":1,)",
            uuid(), uuid());
        theme();
        put(R"("links":{{"model_class":"VDModelAppLinks","model_version":0,"modelID":"appLinks_{}",)"
            R"("lastShareLink":"https://share.example.com/p/5d1c0b7e","lastShareLinkValid":1}},)",
            uuid());
        list("screens", shape_.screens, [&](std::size_t s) { screen(s + 1); });
        out_ += ',';
        list("views", 2, [&](std::size_t) {
            const std::size_t id = views_ + 1;
            open({.name = fmt::format("Sticker {}", id), .var = fmt::format("sticker{}", id)});
            close();
        });
        out_ += ',';
        list("components", masters_.size(), [&](std::size_t m) { master(m); });
        out_ += R"(,"similarScreenIds":[)";
        for (std::size_t s = 1; s + 1 <= shape_.screens && s < 20; s += 2)
            put(R"({}["{}","{}"])", s > 1 ? "," : "", screenID(s), screenID(s + 1));
        out_ += "]}";
        return std::move(out_);
    }

private:
    // ---------------------------------------------------------------- plain values

    /// The next number of a prefix's identifiers: a document numbers each prefix on its own.
    std::size_t next(std::string_view prefix) {
        const auto found = numbers_.try_emplace(std::string(prefix), 0).first;
        return ++found->second;
    }

    static bool isTabBarScreen(std::size_t n) { return n % 10 == 0; }

    /// The identifier of the n-th screen; tab bar screens are numbered apart.
    static std::string screenID(std::size_t n) {
        return isTabBarScreen(n) ? fmt::format("TabBarScreen_{}", n / 10)
                                 : fmt::format("screen_{}", n - n / 10);
    }

    template <class... Args> void put(fmt::format_string<Args...> format, Args&&... args) {
        fmt::format_to(std::back_inserter(out_), format, std::forward<Args>(args)...);
    }

    double number() { return std::uniform_int_distribution<int>(0, 4000)(random_) / 4.0; }
    float fraction() { return std::uniform_int_distribution<int>(0, 255)(random_) / 255.0f; }

    std::string uuid() {
        std::uniform_int_distribution<std::uint64_t> bits;
        const std::uint64_t a = bits(random_), b = bits(random_);
        return fmt::format("{:08x}-{:04x}-4{:03x}-{:04x}-{:012x}", a >> 32, (a >> 16) & 0xffff, a & 0xfff,
                           0x8000 | ((b >> 48) & 0x3fff), b & 0xffffffffffffULL);
    }

    /// A layer's identifier as the design tool writes it.
    std::string layer() {
        std::string id = uuid();
        std::transform(id.begin(), id.end(), id.begin(), [](unsigned char c) { return std::toupper(c); });
        return id;
    }

    std::string colorText() {
        return fmt::format(
            R"({{"model_class":"VDModelColor","model_version":0,"red":{},"green":{},"blue":{},)"
            R"("alpha":1}})",
            fraction(), fraction(), fraction());
    }

    void color(const char* key) { put(R"("{}":{},)", key, colorText()); }

    /// `"key":[...],` with `count` items written by `item`.
    void list(const char* key, std::size_t count, const std::function<void(std::size_t)>& item) {
        put(R"("{}":[)", key);
        for (std::size_t i = 0; i < count; ++i) {
            if (i) out_ += ',';
            item(i);
        }
        out_ += ']';
    }

    void constraint(const char* key, bool enabled, double constant) {
        put(R"("{}":{{"model_class":"VDModelConstraint","model_version":0,"enabled":{},"multiplier":1,)"
            R"("constant":{}}},)",
            key, enabled ? 1 : 0, constant);
    }

    void gradient() {
        put(R"({{"model_class":"VDModelGradient","model_version":0,"modelID":"gradient_{}","gradientType":0,)"
            R"("elipseLength":0,"from":{{"model_class":"VDModelPoint","model_version":0,"modelID":"point_{}",)"
            R"("x":0.5,"y":0}},"to":{{"model_class":"VDModelPoint","model_version":0,"modelID":"point_{}",)"
            R"("x":0.5,"y":1}},"stops":[)",
            uuid(), uuid(), uuid());
        for (int i = 0; i < 2; ++i)
            put(R"({}{{"model_class":"VDModelGradientStop","model_version":0,"modelID":"gradientStop_{}",)"
                R"("position":{},"color":{}}})",
                i ? "," : "", uuid(), i, colorText());
        out_ += "]}";
    }

    // ---------------------------------------------------------------- the document's records

    void theme() {
        put(R"("theme":{{"model_class":"VDModelTheme","model_version":0,"modelID":"theme_{}",)"
            R"("name":"Default Theme","statusbarType":0,"recentFonts":["Inter-Regular","Inter-Bold"],)"
            R"("recentFontsFamilies":["Inter"],)",
            uuid());
        put(R"("navBar":{{"model_class":"VDModelBar","model_version":0,"modelID":"bar_{}","transparent":0,)",
            uuid());
        color("tint");
        color("color");
        color("titleColor");
        out_ += R"("titleTextSize":"17","titleFont":"Inter-Bold"},)";
        static constexpr std::array<std::array<const char*, 5>, 4> fonts = {{
            {"Inter", "Inter-Regular", "400", "normal", "Regular"},
            {"Inter", "Inter-Bold", "700", "normal", "Bold"},
            {"Playfair Display", "PlayfairDisplay-Italic", "400", "italic", "Italic"},
            {"Roboto Mono", "RobotoMono-Regular", "400", "normal", "Regular"},
        }};
        out_ += R"("fonts":[)";
        for (std::size_t i = 0; i < fonts.size(); ++i) {
            const auto& f = fonts[i];
            put(R"({}{{"model_class":"VDModelFont","model_version":0,"modelID":"font_{}","familyName":"{}",)"
                R"("fontName":"{}","weight":"{}","style":"{}","originalFontName":"{}","originalStyle":"{}",)"
                R"("size":16,"lineSpacing":1.4,"letterSpacing":0,)"
                R"("cssLink":"https://fonts.googleapis.com/css?family={}"}})",
                i ? "," : "", uuid(), f[0], f[1], f[2], f[3], f[0], f[4], f[0]);
        }
        out_ +=
            R"(],"fontsCssMapping":{"Inter":"'Inter', sans-serif","Roboto Mono":"'Roboto Mono', monospace"},)";
        out_ += R"("globalColors":{)";
        static constexpr std::array<const char*, 6> names = {"primary", "secondary", "accent",
                                                             "surface", "error",     "onPrimary"};
        for (std::size_t i = 0; i < names.size(); ++i)
            put(R"({}"{}":{})", i ? "," : "", names[i], colorText());
        put(R"(}},"documentColors":{{"brand":{}}},)", colorText());
        out_ += R"("textStyles":{"Heading":{"font":"Inter-Bold","textSize":"28","lineHeight":34},)"
                R"("Body":{"font":"Inter-Regular","textSize":"16","lineHeight":24}}},)";
    }

    // ---------------------------------------------------------------- views

    /// Opens a view with the fields every view has; the caller adds its class's fields, each
    /// followed by a comma, then `close`s it.
    void open(const Head& head) {
        const std::size_t id = ++views_;
        put(R"({{"model_class":"{}","model_version":0,"modelID":"{}_{}",)", head.cls, head.prefix,
            next(head.prefix));
        if (head.var) put(R"("variableID":"{}",)", *head.var);
        const std::string layerID = head.layer.empty() ? layer() : head.layer;
        put(R"("viewName":"{}","userChangedViewName":{},"sketchId":"{}","importedID":"{}",)"
            R"("x":{},"y":{},"width":{},"height":{},"alpha":1,"hidden":0,"cornersRadius":{},)",
            head.name, id % 3 == 0 ? 1 : 0, layerID, layerID, number(), number(), number(), number(),
            number() / 100);
        color("color");
        if (head.border) {
            color("borderColor");
            put(R"("borderWidth":{},"borderPosition":"{}",)", 1 + id % 4, id % 2 ? "center" : "outside");
        }
        out_ += R"("constraints":{"model_class":"VDModelViewConstraints","model_version":0,"automatic":0,)";
        constraint("top", true, 8);
        constraint("left", true, 16);
        if (head.border) {
            constraint("width", true, number());
            constraint("height", true, number());
        }
        out_ += R"("scaleFactor":1},)";
        specs(id);
        if (id % 9 == 0)
            put(R"("breakpoints":{{"tablet":{{"x":{},"y":{},"width":{},"height":{},"hidden":0}}}},)",
                number(), number(), number(), number());
        if (id % 11 == 0)
            put(R"("enterAnimation":{{"model_class":"VDModelAnimationWeb","model_version":0,)"
                R"("modelID":"animationWeb_{}","delay":0,"duration":0.4,"curveType":"ease-out",)"
                R"json("fromCSS":"opacity: 0; transform: translateY(24px)","toCSS":"opacity: 1","name":"fadeIn"}},)json",
                uuid());
        if (id % 13 == 0)
            put(R"("originalFrame":{{"model_class":"VDModelFrame","model_version":0,"x":{},"y":{},"width":{},)"
                R"("height":{}}},)",
                number(), number(), number(), number());
        const bool reachable =
            std::none_of(stack_.begin(), stack_.end(), [](const std::string& part) { return part.empty(); });
        if (head.var && recording_ && reachable) {
            std::string path = "this";
            for (const std::string& part : stack_)
                (path += ';') += part;
            paths_.push_back(path + ';' + *head.var);
        }
        // An unnamed layer has no path, and neither has anything below it.
        stack_.push_back(head.var.value_or(""));
    }

    /// Ends a view with its actions and subviews.
    void close(const Write& actions = nullptr, const Write& subviews = nullptr) {
        out_ += R"("actions":[)";
        if (actions) actions();
        out_ += R"(],"subviews":[)";
        if (subviews) subviews();
        out_ += "]}";
        stack_.pop_back();
    }

    /// The exported specification: mostly plain, every fourth view with its records.
    void specs(std::size_t id) {
        if (id % 4) {
            put(R"("specsInfo":{{"model_class":"VDModelSpecsInfo","model_version":0,"borders":[],)"
                R"("fills":[{{"type":"color","opacity":{}}}],"assets":{{"png":"assets/view_{}.png"}}}},)",
                fraction(), id);
            return;
        }
        put(R"("specsInfo":{{"model_class":"VDModelSpecsInfo","model_version":0,"borders":[{{)"
            R"("model_class":"VDModelBorder","model_version":0,"position":"center","width":1,"dash":0,"gap":0,)"
            R"("color":{}}}],"shadows":[{{"model_class":"VDModelShadow","model_version":0,"xOffset":0,)"
            R"("yOffset":2,"spread":0,"blur":8,"inside":0,"color":{}}}],"innerShadows":[],"fills":[{{)"
            R"("model_class":"VDModelFill","model_version":0,"modelID":"fill_{}","gradient":)",
            colorText(), colorText(), uuid());
        gradient();
        put(R"(}}],"assets":{{"png":"assets/view_{}.png","svg":"assets/view_{}.svg"}}}},)", id, id);
    }

    /// `subviews` below the current view: one each, comma-separated.
    void children(std::initializer_list<Write> items) {
        bool first = true;
        for (const Write& item : items) {
            if (!first) out_ += ',';
            first = false;
            item();
        }
    }

    void textFields(const std::string& text, const char* font, const char* size) {
        put(R"("text":"{}","font":"{}","fontWeight":"{}","textSize":"{}",)", text, font,
            font[std::char_traits<char>::length(font) - 1] == 'd' ? "700" : "400", size);
        color("textColor");
        out_ += R"("linebreak":0,"kern":0,"lineHeight":0,"pSpacing":0,)";
    }

    /// A label; every third has styled runs in several fonts.
    void label(const std::string& var, const std::string& text, bool named = true,
               const Write& actions = nullptr) {
        const std::size_t id = views_ + 1;
        open({.cls = "VDModelLabel",
              .prefix = "Label",
              .name = "Label: " + text,
              .var = named ? std::optional(var) : std::nullopt,
              .border = id % 5 == 0});
        textFields(text, id % 2 ? "Inter-Regular" : "Inter-Bold", id % 2 ? "16" : "20");
        put(R"("lines":{},"alignment":{},"isMinWidth":0,"isAutoWidth":1,"hasUnderline":0,"hasBullets":0,)"
            R"("hasNumbers":0,"hasStrike":0,"vAlignment":"top",)",
            id % 4, id % 3);
        if (id % 3 == 0) {
            out_ += R"("spans":[)";
            static constexpr std::array<std::array<const char*, 3>, 3> runs = {{
                {"Only ", "Inter-Regular", "16"},
                {"today", "PlayfairDisplay-Italic", "18"},
                {": free delivery", "RobotoMono-Regular", "14"},
            }};
            for (std::size_t i = 0; i < runs.size(); ++i) {
                put(R"({}{{"model_class":"VDModelSpan","model_version":0,"modelID":"span_{}","isEqualToParent":{},)",
                    i ? "," : "", uuid(), i == 0 ? 1 : 0);
                textFields(runs[i][0], runs[i][1], runs[i][2]);
                put(R"("hasUnderline":{},"hasStrike":0}})", i == 1 ? 1 : 0);
            }
            out_ += "],";
        }
        close(actions);
    }

    void image(const std::string& var, const std::string& file, bool named = true,
               const std::string& layerID = {}) {
        const std::size_t id = views_ + 1;
        open({.cls = "VDModelImageView",
              .prefix = "image",
              .name = "Image: " + file,
              .var = named ? std::optional(var) : std::nullopt,
              .layer = layerID,
              .border = id % 5 == 0});
        put(R"("imageName":"{}","fileName":"assets/{}","imageMode":{},"isTintOn":0,)", file, file, id % 3);
        color("tintColor");
        close();
    }

    void listener(const char* event, const std::string& target, double timerMS = 0) {
        put(R"({{"model_class":"VDModelEventListener","model_version":0,"modelID":"eventListener_{}",)"
            R"("event":"{}","target":"{}","timerMS":{}}})",
            uuid(), event, target, timerMS);
    }

    /// A button: a view holding a label, with a hover effect and one action on a click.
    void button(const std::string& var, const std::string& text, const Write& action,
                const std::string& layerID = {}, const std::string& labelLayer = {}) {
        open({.name = "Button " + text, .var = var, .layer = layerID});
        out_ +=
            R"("hover":{"model_class":"VDModelHover","model_version":0,"curve":"ease-in-out","duration":0.2,)"
            R"("css":"opacity: 0.8"},)";
        close(action, [&] {
            const std::size_t id = views_ + 1;
            open({.cls = "VDModelLabel",
                  .prefix = "Label",
                  .name = "Label: " + text,
                  .var = var + "Label",
                  .layer = labelLayer});
            textFields(text, "Inter-Bold", "16");
            put(R"("lines":1,"alignment":1,"isAutoWidth":{},)", id % 2);
            close();
        });
    }

    // ---------------------------------------------------------------- actions

    void presentScreen(std::size_t screen, std::size_t n) {
        put(R"({{"model_class":"VDModelActionPresentScreen","model_version":0,"modelID":"OpenScreen_{}",)"
            R"("name":"Open Page {}","trigger":0,"delayFromTrigger":0,"screenId":"{}","animation":{},)"
            R"("presentationType":0,"isOverlay":0,)",
            next("OpenScreen"), screen, screenID(screen), n % 4);
        if (n % 2)
            put(R"("autoAnimate":{{"model_class":"VDModelAutoAnimate","model_version":0,"modelID":"autoAnimate_{}",)"
                R"("easing":"ease-in-out","duration":0.35}},)",
                uuid());
        else
            put(R"("webAnimation":{{"model_class":"VDModelAnimationWeb","model_version":0,)"
                R"("modelID":"animationWeb_{}","delay":0,"duration":0.3,"curveType":"ease","name":"slideLeft"}},)",
                uuid());
        out_ += R"("listeners":[)";
        listener("click", "this");
        out_ += "]}";
    }

    /// A transition between two of the view's states (none for the initial look), with a
    /// timeline of one keyframe for each path it touches.
    void transition(const std::optional<std::string>& origin, const std::optional<std::string>& target,
                    const char* event, const std::string& listenerTarget, double timerMS,
                    const std::vector<Touch>& touches, const std::string& name = {}) {
        const std::size_t id = next("Transition");
        put(R"({{"model_class":"VDModelActionScriptAnimation","model_version":0,"modelID":"Transition_{}",)"
            R"("name":"{}","trigger":0,"delayFromTrigger":0,)",
            id, name.empty() ? fmt::format("Transition {}", id) : name);
        if (origin) put(R"("originStateName":"{}",)", *origin);
        if (target) put(R"("targetStateName":"{}",)", *target);
        out_ += R"("listeners":[)";
        listener(event, listenerTarget, timerMS);
        out_ += R"(],"timelines":[)";
        for (std::size_t i = 0; i < touches.size(); ++i) {
            put(R"({}{{"model_class":"VDModelAnimationTimeline","model_version":0,"modelID":"animationTimeline_{}",)"
                R"("target":"{}","animations":[{{"model_class":"VDModelAnimation","model_version":0,)"
                R"("modelID":"animation_{}","delay":0,"duration":0.3,"curve":"ease-in-out",)"
                R"("cubicBezier":".42;0;.58;1","state":{{{}}}}}]}})",
                i ? "," : "", uuid(), touches[i].path, uuid(), touches[i].values);
        }
        out_ += "]}";
    }

    /// A named state's change set. Older documents joined the parts of its keys with ".".
    void state(const std::string& name, const std::vector<Touch>& touches, bool legacy) {
        put(R"({{"model_class":"VDModelViewState","model_version":0,"name":"{}","overrides":{{)", name);
        for (std::size_t i = 0; i < touches.size(); ++i) {
            std::string key = touches[i].path;
            if (legacy) std::replace(key.begin(), key.end(), ';', '.');
            put(R"({}"{}":{{{}}})", i ? "," : "", key, touches[i].values);
        }
        out_ += "}}";
    }

    // ---------------------------------------------------------------- screens

    void screen(std::size_t n) {
        paths_.clear();
        const bool tabs = isTabBarScreen(n);
        const bool last = n == shape_.screens;
        put(R"({{"model_class":"{}","model_version":0,"modelID":"{}","variableID":"screen{}",)"
            R"("viewName":"Screen: Page {}","title":"Page {}","userChangedViewName":0,"isAppRoot":{},)"
            R"("isSelectedInEditor":0,"statusBarType":0,"navBehaviour":2,"selectedBreakpoint":0,)"
            R"("enabledBreakpoints":["tablet"],"exportCacheKey":"{}","imageFilenames":["screen_{}@2x.png"],)"
            R"("x":0,"y":0,"width":375,"height":812,"alpha":1,"hidden":0,"defaultStateName":"",)",
            tabs ? "VDModelTabBarScreen" : "VDModelScreen", screenID(n), n, n, n, n == 1 ? 1 : 0, uuid(), n);
        color("color");
        out_ += R"("subviews":[)";
        budget_ = views_ + shape_.viewsPerScreen;
        children({
            [&] { header(n); },
            [&] { carousel(n); },
            [&] { instance(n); },
            [&] { form(n, last); },
            [&] { table(n); },
            [&] { media(n); },
        });
        // What the screen's own parts leave of its views, bar the tab bar, in nested sections.
        const std::size_t reserve = tabs ? 4 : 0;
        for (std::size_t i = 0; views_ + reserve < budget_; ++i) {
            out_ += ',';
            section(1, i);
        }
        if (tabs) {
            out_ += ',';
            tabBar(n);
        }
        out_ += R"(],"states":[)";
        // Each state changes every tenth view, the two at different views.
        std::array<std::vector<Touch>, 2> touches;
        for (std::size_t p = 0; p < paths_.size(); ++p) {
            if (p % 10 == 0) {
                touches[0].push_back(
                    {paths_[p], fmt::format(R"("x":{},"y":{},"alpha":{})", number(), number(), fraction())});
            } else if (p % 10 == 5) {
                touches[1].push_back({paths_[p], fmt::format(R"("width":{},"height":{},"color":{})", number(),
                                                             number(), colorText())});
            }
        }
        state("compact", touches[0], n % 4 == 3);
        out_ += ',';
        state("expanded", touches[1], false);
        out_ += R"(],"actions":[)";
        // The initial look to "compact" on a click; "compact" to "expanded" on a hover, where
        // what only "compact" changed goes back to the view's own values.
        const std::string listenerTarget = paths_.empty() ? "this" : paths_.front();
        transition(std::nullopt, "compact", "click", listenerTarget, 0, touches[0],
                   fmt::format("Compact {}", n));
        out_ += ',';
        std::vector<Touch> both = touches[1];
        for (const Touch& t : touches[0])
            both.push_back({t.path, fmt::format(R"("x":{},"y":{},"alpha":1)", number(), number())});
        transition("compact", "expanded", "mouseenter", listenerTarget, 0, both, fmt::format("Expand {}", n));
        out_ += "]}";
    }

    /// A fixed header: a back button (but on the first page), the page's title, which plays the
    /// page's first transition on a click, and a logo.
    void header(std::size_t n) {
        open({.name = "Header", .var = "header"});
        out_ += R"("isFixedPosition":1,)";
        close(nullptr, [&] {
            children({
                [&] {
                    button("backButton", "Back", [&] {
                        if (n == 1) return;
                        put(R"({{"model_class":"VDModelActionDismissScreen","model_version":0,)"
                            R"("modelID":"CloseScreen_{}","name":"Back {}","trigger":0,"delayFromTrigger":0,)"
                            R"("type":0,"isOverlay":0,"animation":1,"listeners":[)",
                            next("CloseScreen"), n);
                        listener("click", "this");
                        out_ += "]}";
                    });
                },
                [&] {
                    label("title", fmt::format("Page {}", n), true, [&] {
                        put(R"({{"model_class":"VDModelActionCallAction","model_version":0,)"
                            R"("modelID":"LaunchAction_{}","name":"Replay {}","trigger":0,"delayFromTrigger":0,)"
                            R"("actionRefs":[{{"model_class":"VDModelActionReference","model_version":0,)"
                            R"("modelID":"actionReference_{}","viewModelPath":"this;parent;parent",)"
                            R"("actionName":"Compact {}"}}],"listeners":[)",
                            next("LaunchAction"), n, uuid(), n);
                        listener("dblclick", "this");
                        out_ += "]}";
                    });
                },
                [&] {
                    open({.cls = "VDModelSliceView",
                          .prefix = "image",
                          .name = "Image: logo.svg",
                          .var = "logo"});
                    out_ += R"("imageName":"logo.svg","imageMode":2,"isTintOn":1,)";
                    color("tintColor");
                    close();
                },
            });
        });
    }

    /// An old timeline component's fields: states, but no default state, the initial look
    /// standing for the first. Returns the writer of its transitions, for its actions: those from
    /// the initial look and back to it name no state.
    Write timelineFields(std::size_t n, const std::vector<Touch>& first, const std::vector<Touch>& second,
                         bool legacy) {
        put(R"("timelineType":"{}","exportSettings":{{"model_class":"VPAnimationExportSettings",)"
            R"("model_version":0,"modelID":"vPAnimationExportSettings_{}","fps":30,"scale":100,"loopCount":0,)"
            R"("transparency":0}},"states":[)",
            n % 2 ? "interaction" : "animation", uuid());
        // Some already hold a state named as the one the upgrade adds.
        const std::string firstName = n % 5 == 0 ? "initial" : "slide1";
        state(firstName, first, legacy);
        out_ += ',';
        state("slide2", second, false);
        out_ += "],";
        return [=, this] {
            transition(std::nullopt, firstName, "click", "this", 0, first);
            out_ += ',';
            transition(firstName, "slide2", "timer", "this", 3000, second);
            out_ += ',';
            transition("slide2", std::nullopt, "click", "this", 0, first);
        };
    }

    static std::vector<Touch> carouselTouches(bool second) {
        if (second)
            return {{"this;slide", R"("x":-375)"},
                    {"this;caption", R"("alpha":0)"},
                    {"this;progress", R"("width":120)"}};
        return {
            {"this;slide", R"("x":0)"}, {"this;caption", R"("alpha":1)"}, {"this;progress", R"("width":40)"}};
    }

    void carousel(std::size_t n) {
        open({.name = "Carousel", .var = "carousel"});
        const Write actions = timelineFields(n, carouselTouches(false), carouselTouches(true), n % 4 == 1);
        close(actions, [&] {
            children({
                [&] { image("slide", fmt::format("slide_{}.jpg", n)); },
                [&] { label("caption", "Summer collection"); },
                [&] {
                    open({.cls = "VDModelProgressView",
                          .prefix = "progressBar",
                          .name = "progressBar",
                          .var = "progress"});
                    close();
                },
                [&] {
                    open({.cls = "VDModelSliderView", .prefix = "slider", .name = "Slider", .var = "volume"});
                    close();
                },
            });
        });
    }

    void prop(const char* type, const char* value, const std::string& target, const char* path, bool done) {
        put(R"({{"model_class":"VDModelProp","model_version":0,"type":"{}","defaultValue":"{}","targetId":"{}")",
            type, value, target);
        // A record repaired before carries the paths and names the repair fills in.
        if (done) repaired(path);
        out_ += '}';
    }

    /// The path and name the repair gives a prop or override of the layer at `path`.
    void repaired(std::string_view path) {
        const std::size_t cut = path.rfind(';');
        put(R"(,"path":"{}","name":"{}")", path, cut == std::string_view::npos ? path : path.substr(cut + 1));
    }

    void componentOverride(const std::string& target, const std::string& value, const char* path, bool done) {
        put(R"({{"model_class":"VDModelComponentOverride","model_version":0,"targetId":"{}","value":{})",
            target, value);
        if (done) repaired(path);
        out_ += '}';
    }

    void badgeRecord(const std::string& text, bool done) {
        const Master& badge = masters_[0];
        put(R"("componentInstanceData":{{"model_class":"VDModelComponentInstanceData","model_version":0,)"
            R"("modelID":"componentInstanceData_{}","masterSymbolID":"{}","masterName":"Badge","props":[)",
            uuid(), badge.symbol);
        prop("text", "New", badge.title, "badgeText", done);
        out_ += R"(],"overrides":[)";
        componentOverride(badge.title, fmt::format(R"("{}")", text), "badgeText", done);
        out_ += "]},";
    }

    /// The layers of a product card, as the master has them and every instance repeats them.
    void cardLayers(const Master& m, std::size_t n, bool master) {
        children({
            [&] {
                open({.cls = "VDModelLabel",
                      .prefix = "Label",
                      .name = "Label: Product",
                      .var = "cardTitle",
                      .layer = m.title});
                textFields(master ? "Product" : fmt::format("Product {}", n), "Inter-Bold", "18");
                out_ += R"("lines":2,"alignment":0,)";
                close();
            },
            [&] {
                image("cardImage", master ? "placeholder.png" : fmt::format("product_{}.png", n), true,
                      m.image);
            },
            [&] {
                open({.cls = "VDModelLabel",
                      .prefix = "Label",
                      .name = "Label: Price",
                      .var = "price",
                      .layer = m.price});
                textFields("€ 19.90", "RobotoMono-Regular", "16");
                out_ += R"("lines":1,"alignment":2,)";
                close();
            },
            [&] {
                // A component inside the component: the badge, with its own record.
                open({.name = "Badge", .var = "badge", .layer = m.badge});
                badgeRecord(master ? "New" : "Sale", !master && n % 4 == 0);
                close(nullptr, [&] {
                    open({.cls = "VDModelLabel",
                          .prefix = "Label",
                          .name = "Label: New",
                          .var = "badgeText",
                          .layer = masters_[0].title});
                    textFields("New", "Inter-Bold", "12");
                    close();
                });
            },
            [&] {
                button(
                    "buyButton", "Buy",
                    [&] {
                        if (!master) presentScreen(n % shape_.screens + 1, n);
                    },
                    {}, m.buttonLabel);
            },
        });
    }

    /// A component instance: the master's layers with its identifiers, props that target them,
    /// and overrides, one of them a list for the badge inside.
    void instance(std::size_t n) {
        const Master& m = masters_[1 + n % (masters_.size() - 1)];
        const bool done = n % 4 == 0;
        open({.name = "Product Card", .var = "productCard", .layer = layer()});
        put(R"("componentInstanceData":{{"model_class":"VDModelComponentInstanceData","model_version":0,)"
            R"("modelID":"componentInstanceData_{}","masterSymbolID":"{}","masterName":"Product Card","props":[)",
            uuid(), m.symbol);
        prop("text", "Product", m.title, "cardTitle", done);
        out_ += ',';
        prop("image", "placeholder.png", m.image, "cardImage", done);
        out_ += ',';
        prop("text", "€ 0", m.price, "price", done);
        out_ += ',';
        prop("component", "", m.badge, "badge", done);
        out_ += ',';
        prop("text", "Buy", m.buttonLabel, "buyButton;buyButtonLabel", done);
        out_ += R"(],"overrides":[)";
        componentOverride(m.title, fmt::format(R"("Product {}")", n), "cardTitle", done);
        out_ += ',';
        componentOverride(m.image, fmt::format(R"("product_{}.png")", n), "cardImage", done);
        out_ += ',';
        componentOverride(m.price, R"("€ 24.90")", "price", done);
        out_ += ',';
        const std::string nested =
            fmt::format(R"([{{"model_class":"VDModelComponentOverride","model_version":0,"targetId":"{}",)"
                        R"("value":"Sale"}}])",
                        masters_[0].title);
        componentOverride(m.badge, nested, "badge", done);
        out_ += "]},";
        close(nullptr, [&] { cardLayers(m, n, false); });
    }

    /// A sign-up form: text fields, a switch and the button that submits it.
    void form(std::size_t n, bool last) {
        open({.cls = "VDModelStackView", .prefix = "stackView", .name = "Stack", .var = "signupForm"});
        put(R"("type":1,"stackType":1,"align":0,"spacing":12,"resizesContainer":1,)"
            R"("padding":{{"model_class":"VDModelViewPadding","model_version":0,"modelID":"viewPadding_{}",)"
            R"("top":16,"right":16,"bottom":16,"left":16}},)",
            uuid());
        close(nullptr, [&] {
            const auto field = [&](const char* var, const char* placeholder, const char* type,
                                   bool password) {
                open({.cls = "VDModelTextView",
                      .prefix = "Text",
                      .name = fmt::format("Text: {}", placeholder),
                      .var = var,
                      .border = true});
                textFields("", "Inter-Regular", "16");
                put(R"("keyboardType":{},"keyboardAppearance":0,"keyboardReturnType":3,"isPassword":{},)"
                    R"("nativeBackground":0,"placeHolder":"{}","inputType":"{}","inputRequired":1,)"
                    R"("inputPlaceholder":"{}",)",
                    password ? 0 : 1, password ? 1 : 0, placeholder, type, placeholder);
                color("phColor");
                close();
            };
            children({
                [&] { field("email", "Email", "email", false); },
                [&] { field("password", "Password", "password", true); },
                [&] {
                    open({.cls = "VDModelSwitchView",
                          .prefix = "switch",
                          .name = "Switch",
                          .var = "newsletter"});
                    out_ += R"("defaultValue":0,)";
                    close();
                },
                [&] {
                    button("submitButton", "Sign up", [&] {
                        put(R"({{"model_class":"VDModelSubmitAction","model_version":0,"modelID":"Action_{}",)"
                            R"("name":"Submit {}","trigger":0,"delayFromTrigger":0,"email":"forms@example.com",)"
                            R"("spreadsheet":"signups","successScreenID":"{}","failureScreenID":"{}",)"
                            R"("listeners":[)",
                            next("Action"), n, screenID(last ? 1 : n + 1), screenID(n));
                        listener("click", "this");
                        out_ += "]}";
                    });
                },
            });
        });
    }

    /// A table with a header, two prototype cells and a footer; every other one static, the
    /// rest driven by a data list. "subviews" repeats what the table shows, as the encoder
    /// writes it, and is ignored on reading.
    void table(std::size_t n) {
        const bool isStatic = n % 2 == 0;
        open({.cls = "VDModelTableView", .prefix = "Table", .name = "Table", .var = "productList"});
        // Paths through a table don't resolve where its cells are prototypes.
        recording_ = false;
        const auto piece = [&](const Write& write) {
            const std::size_t from = out_.size();
            write();
            return out_.substr(from);
        };
        out_ += R"("header":)";
        const std::string head = piece([&] {
            open({.name = "List Header", .var = "listHeader"});
            close(nullptr, [&] { label("headerTitle", "Bestsellers"); });
        });
        out_ += R"(,"cells":[)";
        std::array<std::string, 2> cells;
        for (std::size_t c = 0; c < cells.size(); ++c) {
            if (c) out_ += ',';
            cells[c] = piece([&] {
                open({.cls = "VDModelCellView",
                      .prefix = "Cell",
                      .name = "Cell",
                      .var = c ? "promoCell" : "productCell"});
                close(nullptr, [&] {
                    children({
                        [&] { label("cellTitle", "Item title"); },
                        [&] { image("thumbnail", "thumb.png"); },
                    });
                });
            });
        }
        out_ += R"(],"footer":)";
        const std::string foot = piece([&] {
            open({.name = "List Footer", .var = "listFooter"});
            close(nullptr, [&] { label("more", "Show more"); });
        });
        out_ += ',';
        if (!isStatic)
            out_ += R"("dataList":{"model_class":"VDModelDataList","model_version":0,"modelID":"dataList_)" +
                    uuid() + R"(","type":2,"fileNameOrUrl":"data/products.json","jsonPathToList":"items"},)";
        put(R"("hasHeader":1,"hasFooter":1,"hasSectionHeader":0,"isStatic":{},"hasSeperator":1,)"
            R"("seperatorOffset":15,"pagingEnabled":0,)",
            isStatic ? 1 : 0);
        color("seperatorColor");
        recording_ = true;
        close(nullptr, [&] {
            out_ += head;
            if (isStatic) {
                for (auto c = cells.rbegin(); c != cells.rend(); ++c)
                    (out_ += ',') += *c;
            }
            (out_ += ',') += foot;
        });
    }

    /// Media and the other kinds of view, in a collection.
    void media(std::size_t n) {
        open({.cls = "VDModelCollectionView", .name = "Collection", .var = "media"});
        close(nullptr, [&] {
            children({
                [&] {
                    open({.cls = "VDModelVideoView", .prefix = "video", .name = "Video", .var = "video"});
                    put(R"("videoName":"intro_{}.mp4","videoURL":"https://cdn.example.com/video/intro_{}.mp4",)"
                        R"("noControls":0,"autoplay":1,"allowFullScreen":1,"loop":1,"cover":1,"playOnHover":0,)",
                        n, n);
                    close();
                },
                [&] {
                    open({.cls = "VDModelWebView", .prefix = "webView", .name = "WebView", .var = "reviews"});
                    put(R"("url":"https://reviews.example.com/embed/{}","previewInEditor":0,)", n);
                    close();
                },
                [&] {
                    open({.cls = "VDModelMapView", .prefix = "map", .name = "Map", .var = "storeMap"});
                    out_ += R"("address":"Unter den Linden 1, 10117 Berlin",)";
                    close();
                },
                [&] {
                    open({.cls = "VDModelGradientView",
                          .prefix = "gradient",
                          .name = "Gradient",
                          .var = "shade"});
                    color("color1");
                    color("color2");
                    close();
                },
                [&] {
                    open({.cls = "VDModelBlurView", .prefix = "blurView", .name = "Blur", .var = "glass"});
                    out_ += R"("isDark":1,"backgroundBlur":{"radius":20,"saturation":1.8},)";
                    close(nullptr, [&] { label("glassText", "Members save 10%"); });
                },
                [&] {
                    open({.cls = "VDModelWidget", .name = "Widget", .var = "chat"});
                    out_ +=
                        R"("widgetSnippet":"<script src=\"https://chat.example.com/w.js\" async></script>",)";
                    close();
                },
            });
        });
    }

    void tabBar(std::size_t n) {
        open({.cls = "VDModelTabBar", .prefix = "TabBar", .name = "TabBar", .var = "tabBar"});
        color("tabbarButtonsColor");
        out_ += R"("firstSelectedTabIndex":0,"tabbarItems":[)";
        // Items aren't subviews: no path reaches them.
        recording_ = false;
        static constexpr std::array<const char*, 3> titles = {"Home", "Search", "Profile"};
        for (std::size_t i = 0; i < titles.size(); ++i) {
            if (i) out_ += ',';
            open({.cls = "VDModelTabBarItem",
                  .prefix = "TabBarItem",
                  .name = "TabBar Item",
                  .var = fmt::format("tab{}", titles[i])});
            put(R"("screenId":"{}","title":"{}","imageName":"tab_{}.png","selectedImageName":"tab_{}_on.png",)",
                screenID(n - 9 + i * 3), titles[i], i, i);
            close([&] {
                put(R"({{"model_class":"VDModelActionSelectTab","model_version":0,"modelID":"SelectTab_{}",)"
                    R"("name":"Select {}","trigger":0,"delayFromTrigger":0,"tabIndex":{},"listeners":[)",
                    next("SelectTab"), titles[i], i);
                listener("click", "this");
                out_ += "]}";
            });
        }
        out_ += "],";
        recording_ = true;
        close();
    }

    /// Nested sections of the rest of the screen's views, `fanOut` to a level, until the
    /// screen's views are written. Leaves cycle through the simple kinds of view; every twelfth
    /// came from the export without a variable name, and the first child of every fourth
    /// section has its parent's name.
    void section(std::size_t level, std::size_t index) {
        const std::size_t id = views_ + 1;
        const bool stack = id % 2;
        const std::string var = fmt::format("{}{}", stack ? "row" : "section", id);
        open({.cls = stack ? "VDModelStackView" : "VDModelView",
              .prefix = stack ? "stackView" : "View",
              .name = fmt::format("{} {}", stack ? "Row" : "Section", id),
              .var = var,
              .border = id % 5 == 0});
        if (stack) put(R"("type":0,"stackType":0,"align":{},"spacing":8,"resizesContainer":0,)", index % 3);
        close(nullptr, [&] {
            for (std::size_t i = 0; i < shape_.fanOut && views_ < budget_; ++i) {
                if (i) out_ += ',';
                if (level + 1 < shape_.depth) {
                    section(level + 1, i);
                } else {
                    leaf(views_ + 1, i == 0 && id % 4 == 0 ? var : std::string());
                }
            }
        });
    }

    void leaf(std::size_t id, const std::string& clash) {
        static constexpr std::array<const char*, 9> kinds = {
            "label", "image", "text", "slice", "switch", "slider", "progress", "gradient", "box"};
        const std::size_t kind = id % kinds.size();
        const std::string name = clash.empty() ? fmt::format("{}{}", kinds[kind], id) : clash;
        const bool named = id % 12 != 0;
        const std::optional<std::string> var = named ? std::optional(name) : std::nullopt;
        switch (kind) {
        case 0:
            return label(name, fmt::format("Text {}", id), named);
        case 1:
            return image(name, fmt::format("photo_{}.jpg", id), named);
        case 2:
            open({.cls = "VDModelTextView",
                  .prefix = "Text",
                  .name = "Text: Search",
                  .var = var,
                  .border = true});
            textFields("", "Inter-Regular", "14");
            out_ += R"("keyboardType":0,"keyboardReturnType":2,"placeHolder":"Search","inputType":"search",)";
            break;
        case 3:
            open({.cls = "VDModelSliceView", .prefix = "image", .name = "Image: icon.svg", .var = var});
            put(R"("imageName":"icon_{}.svg","imageMode":2,)", id % 7);
            break;
        case 4:
            open({.cls = "VDModelSwitchView", .prefix = "switch", .name = "Switch", .var = var});
            put(R"("defaultValue":{},)", id % 2);
            break;
        case 5:
            open({.cls = "VDModelSliderView", .prefix = "slider", .name = "Slider", .var = var});
            break;
        case 6:
            open({.cls = "VDModelProgressView", .prefix = "progressBar", .name = "progressBar", .var = var});
            break;
        case 7:
            open({.cls = "VDModelGradientView", .prefix = "gradient", .name = "Gradient", .var = var});
            color("color1");
            color("color2");
            break;
        default:
            open({.name = fmt::format("Box {}", id), .var = var, .border = true});
        }
        close();
    }

    // ---------------------------------------------------------------- components

    /// A master in the document's components: the badge first, then product cards, every
    /// other one an old timeline component. Every third came without a variable name. Masters
    /// carry no `componentMasterData`: a plain master record can't be read by name, so the
    /// document would neither decode (the identifier registry built at the end reads every
    /// field) nor encode; their instances name them by `masterSymbolID`.
    void master(std::size_t m) {
        const Master& master = masters_[m];
        paths_.clear();
        const std::optional<std::string> var =
            m % 3 == 2 ? std::nullopt
                       : std::optional(m == 0 ? std::string("badge") : fmt::format("productCard{}", m));
        open({.name = m == 0 ? "Badge" : fmt::format("Product Card {}", m),
              .var = var,
              .layer = master.symbol});
        if (m == 0) {
            close(nullptr, [&] {
                open({.cls = "VDModelLabel",
                      .prefix = "Label",
                      .name = "Label: New",
                      .var = "badgeText",
                      .layer = master.title});
                textFields("New", "Inter-Bold", "12");
                close();
            });
            return;
        }
        Write actions;
        if (m % 2) {
            const std::vector<Touch> first = {{"this;cardImage", R"("alpha":1)"}, {"this;price", R"("y":0)"}};
            const std::vector<Touch> second = {{"this;cardImage", R"("alpha":0.6)"},
                                               {"this;price", R"("y":-8)"}};
            actions = timelineFields(m, first, second, m % 4 == 1);
        }
        close(actions, [&] { cardLayers(master, m, true); });
    }

    AppShape shape_;
    std::mt19937 random_{42};
    std::string out_;
    std::size_t views_ = 0, budget_ = 0;
    /// The last number handed out for each prefix.
    std::map<std::string, std::size_t, std::less<>> numbers_;
    std::vector<Master> masters_;
    /// The variable names from the current root down to the view being written.
    std::vector<std::string> stack_;
    /// The current root's named views as paths relative to it, in the order written.
    std::vector<std::string> paths_;
    bool recording_ = true;
};

} // namespace

std::string generateAppJson(const AppShape& shape) {
    return AppWriter(shape).document();
}

} // namespace velmo::bench
