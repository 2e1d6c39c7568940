// The property vocabulary of the engine: which property each kind of object has, its type and its
// default value.
#include "engine/property_table.h"

#include <cstdlib>
#include <strings.h>

namespace ae {

namespace {

constexpr const char* onoff = "on|off";
constexpr const char* line_styles = "-|--|:|-.|none";
constexpr const char* markers = "none|.|o|x|+|*|s|square|d|diamond|^|v|<|>|p|pentagram|h|hexagram";

#define P(name, type, words, def) {name, PType::type, words, def, 0}
#define V(name, n, def) {name, PType::vector, nullptr, def, n}
#define END {nullptr, PType::any, nullptr, nullptr, 0}
#define DEFAULT_CALLBACKS(kind) P("Default" #kind "CreateFcn", text, nullptr, ""), P("Default" #kind "DeleteFcn", text, nullptr, "")

const PropRule common[] = {
    P("Type", readonly, nullptr, ""),
    P("Parent", handle, nullptr, ""),
    P("Children", readonly, nullptr, ""),
    P("Tag", text, nullptr, ""),
    P("UserData", any, nullptr, ""),
    P("Visible", word, onoff, "'on'"),
    P("HandleVisibility", word, "on|callback|off", "'on'"),
    P("ButtonDownFcn", text, nullptr, ""),
    P("CreateFcn", text, nullptr, ""),
    P("DeleteFcn", text, nullptr, ""),
    P("Selected", word, onoff, "'off'"),
    P("SelectionHighlight", word, onoff, "'on'"),
    P("HitTest", word, onoff, "'on'"),
    P("Clipping", word, onoff, "'on'"),
    P("Interruptible", word, onoff, "'on'"),
    P("BusyAction", word, "queue|cancel", "'queue'"),
    END,
};

const PropRule root_props[] = {
    P("CurrentFigure", readonly, nullptr, ""),
    P("CallbackObject", readonly, nullptr, ""),
    V("ScreenSize", 4, "1 1 1920 1080"),
    P("ScreenDepth", number, nullptr, "24"),
    V("PointerLocation", 2, "0 0"),
    P("PointerWindow", number, nullptr, "0"),
    P("ShowHiddenHandles", word, onoff, "'off'"),
    P("Units", word, "pixels|normalized|inches|centimeters|points|characters", "'pixels'"),
    P("Format", word, "short|long|shortE|longE|shortG|longG|hex|bank|rational", "'short'"),
    P("FormatSpacing", word, "loose|compact", "'loose'"),
    P("Echo", word, onoff, "'off'"),
    P("Diary", word, onoff, "'off'"),
    P("DiaryFile", text, nullptr, "'diary'"),
    P("Language", text, nullptr, "'english'"),
    P("Profile", word, onoff, "'off'"),
    P("ErrorMessage", text, nullptr, ""),
    // Defaults that new figures and axes take, and the callbacks each new object of a kind gets.
    V("DefaultFigurePosition", 4, "100 100 560 420"),
    P("DefaultFigureColor", color, nullptr, "0.94 0.94 0.94"),
    P("DefaultAxesColor", colorword, "none", "1 1 1"),
    V("DefaultAxesPosition", 4, "0 0 1 1"),
    DEFAULT_CALLBACKS(Figure), DEFAULT_CALLBACKS(Axes), DEFAULT_CALLBACKS(Image), DEFAULT_CALLBACKS(Line),
    DEFAULT_CALLBACKS(Patch), DEFAULT_CALLBACKS(Surface), DEFAULT_CALLBACKS(Text), DEFAULT_CALLBACKS(Uicontrol),
    DEFAULT_CALLBACKS(Hwcontrol), DEFAULT_CALLBACKS(Uimenu), DEFAULT_CALLBACKS(Uicontextmenu),
    END,
};

const PropRule figure_props[] = {
    P("Color", color, nullptr, "0.94 0.94 0.94"),
    V("Position", 4, "100 100 560 420"),
    P("Name", text, nullptr, ""),
    P("NumberTitle", word, onoff, "'on'"),
    P("Colormap", data, nullptr, ""),
    P("CurrentAxes", readonly, nullptr, ""),
    P("CurrentObject", handle, nullptr, ""),
    V("CurrentPoint", 2, "0 0"),
    P("CurrentCharacter", text, nullptr, ""),
    P("PixelsPerInch", number, nullptr, "96"),
    P("Units", word, "pixels|normalized|inches|centimeters|points|characters", "'pixels'"),
    P("MenuBar", word, "figure|none|on|off", "'figure'"),
    P("Resize", word, onoff, "'on'"),
    P("NextPlot", word, "add|replace|replacechildren|new", "'add'"),
    P("Pointer", word, "arrow|crosshair|fullcrosshair|ibeam|watch|topl|topr|botl|botr|left|top|right|bottom|circle|cross|fleur|custom", "'arrow'"),
    P("CloseRequestFcn", text, nullptr, "'closereq'"),
    P("KeyPressFcn", text, nullptr, ""),
    P("ResizeFcn", text, nullptr, ""),
    P("WindowButtonDownFcn", text, nullptr, ""),
    P("WindowButtonMotionFcn", text, nullptr, ""),
    P("WindowButtonUpFcn", text, nullptr, ""),
    P("WindowStyle", word, "normal|modal", "'normal'"),
    P("SelectionType", word, "normal|extend|alt|open", "'normal'"),
    P("InvertHardcopy", word, onoff, "'on'"),
    P("PaperOrientation", word, "portrait|landscape", "'portrait'"),
    V("PaperPosition", 4, "0.25 2.5 8 6"),
    P("PaperPositionMode", word, "auto|manual", "'manual'"),
    V("PaperSize", 2, "8.5 11"),
    P("PaperType", text, nullptr, "'usletter'"),
    P("PaperUnits", word, "inches|centimeters|normalized|points", "'inches'"),
    P("Renderer", word, "painters|zbuffer|opengl", "'painters'"),
    P("RendererMode", word, "auto|manual", "'auto'"),
    P("DesignMode", number, nullptr, "0"),
    P("ControlBar", word, onoff, "'on'"),
    P("MoveIntoScreen", number, nullptr, "0"),
    P("IntegerHandle", word, onoff, "'on'"),
    P("ShareColors", word, onoff, "'on'"),
    P("BackingStore", word, onoff, "'on'"),
    P("DrawMode", word, "normal|fast", "'normal'"),
    P("WhiteBackgroundPrint", any, nullptr, "0"),
    P("DefaultAxesColor", colorword, "none", "1 1 1"),
    V("DefaultAxesPosition", 4, "0 0 1 1"),
    END,
};

const PropRule axes_props[] = {
    V("Position", 4, "0 0 1 1"),  // the room it has: the plot box is inset for its labels
    P("Color", colorword, "none", "1 1 1"),
    P("XColor", color, nullptr, "0.15 0.15 0.15"),
    P("YColor", color, nullptr, "0.15 0.15 0.15"),
    P("ZColor", color, nullptr, "0.15 0.15 0.15"),
    V("XLim", 2, "0 1"), V("YLim", 2, "0 1"), V("ZLim", 2, "0 1"), V("CLim", 2, "0 1"),
    P("XLimMode", word, "auto|manual", "'auto'"),
    P("YLimMode", word, "auto|manual", "'auto'"),
    P("ZLimMode", word, "auto|manual", "'auto'"),
    P("CLimMode", word, "auto|manual", "'auto'"),
    P("XScale", word, "linear|log", "'linear'"),
    P("YScale", word, "linear|log", "'linear'"),
    P("ZScale", word, "linear|log", "'linear'"),
    P("XDir", word, "normal|reverse|inverted", "'normal'"),
    P("YDir", word, "normal|reverse|inverted", "'normal'"),
    P("ZDir", word, "normal|reverse|inverted", "'normal'"),
    P("XGrid", word, onoff, "'off'"), P("YGrid", word, onoff, "'off'"), P("ZGrid", word, onoff, "'off'"),
    V("XTick", 0, ""), V("YTick", 0, ""), V("ZTick", 0, ""),
    P("XTickMode", word, "auto|manual", "'auto'"),
    P("YTickMode", word, "auto|manual", "'auto'"),
    P("ZTickMode", word, "auto|manual", "'auto'"),
    P("XTickLabel", any, nullptr, ""), P("YTickLabel", any, nullptr, ""), P("ZTickLabel", any, nullptr, ""),
    P("XTickLabelMode", word, "auto|manual", "'auto'"),
    P("YTickLabelMode", word, "auto|manual", "'auto'"),
    P("ZTickLabelMode", word, "auto|manual", "'auto'"),
    P("XAxisLocation", word, "bottom|top", "'bottom'"),
    P("YAxisLocation", word, "left|right", "'left'"),
    P("Box", word, onoff, "'on'"),
    P("Title", handle, nullptr, ""), P("XLabel", handle, nullptr, ""),
    P("YLabel", handle, nullptr, ""), P("ZLabel", handle, nullptr, ""),
    V("View", 2, "0 90"),
    P("Projection", word, "orthographic|perspective", "'orthographic'"),
    P("FontName", text, nullptr, "'Helvetica'"),
    P("FontSize", number, nullptr, "10"),
    P("FontWeight", word, "normal|bold|light|demi", "'normal'"),
    P("FontAngle", word, "normal|italic|oblique", "'normal'"),
    P("LineWidth", number, nullptr, "0.5"),
    P("GridLineStyle", word, line_styles, "':'"),
    P("MinorGridLineStyle", word, line_styles, "':'"),
    P("TickDir", word, "in|out", "'in'"),
    P("TickDirMode", word, "auto|manual", "'auto'"),
    V("TickLength", 2, "0.01 0.025"),
    P("NextPlot", word, "add|replace|replacechildren", "'replace'"),
    P("ColorOrder", data, nullptr,
      "0 0 1;0 0.5 0;1 0 0;0 0.75 0.75;0.75 0 0.75;0.75 0.75 0;0.25 0.25 0.25"),
    P("LineStyleOrder", any, nullptr, "'-'"),
    V("DataAspectRatio", 3, "1 1 1"),
    P("DataAspectRatioMode", word, "auto|manual", "'auto'"),
    V("PlotBoxAspectRatio", 3, "1 1 1"),
    P("PlotBoxAspectRatioMode", word, "auto|manual", "'auto'"),
    V("CameraPosition", 3, "0 0 10"), P("CameraPositionMode", word, "auto|manual", "'auto'"),
    V("CameraTarget", 3, "0 0 0"), P("CameraTargetMode", word, "auto|manual", "'auto'"),
    V("CameraUpVector", 3, "0 1 0"), P("CameraUpVectorMode", word, "auto|manual", "'auto'"),
    P("CameraViewAngle", number, nullptr, "6.6"), P("CameraViewAngleMode", word, "auto|manual", "'auto'"),
    P("CurrentPoint", data, nullptr, "0 0 0;0 0 0"),
    P("Layer", word, "bottom|top", "'bottom'"),
    P("Units", word, "normalized|pixels|inches|centimeters|points|characters", "'normalized'"),
    V("AmbientLightColor", 3, "1 1 1"),
    P("Legend", word, onoff, "'off'"),
    P("LegendString", any, nullptr, ""),
    P("LegendPos", number, nullptr, "1"),
    P("Shading", word, "flat|interp|faceted", "'faceted'"),
    P("DrawMode", word, "normal|fast", "'normal'"),
    P("Colormap", data, nullptr, ""),
    P("square", word, onoff, "'off'"),
    END,
};

// Lines, patches and surfaces share the drawing properties.
#define STROKE_PROPS                                                   \
    P("LineStyle", word, line_styles, "'-'"),                          \
    P("LineWidth", number, nullptr, "0.5"),                            \
    P("Marker", word, markers, "'none'"),                              \
    P("MarkerSize", data, nullptr, "6"),                               \
    P("MarkerEdgeColor", colorword, "auto|none", "'auto'"),            \
    P("MarkerFaceColor", colorword, "auto|none", "'none'"),            \
    P("EraseMode", word, "normal|background|xor|none", "'normal'")

const PropRule line_props[] = {
    P("XData", data, nullptr, ""), P("YData", data, nullptr, ""), P("ZData", data, nullptr, ""),
    P("Color", color, nullptr, "0 0 1"),
    STROKE_PROPS,
    P("ChartType", text, nullptr, "'line'"),
    P("Stacktype", any, nullptr, ""),
    P("MarkerColor", any, nullptr, ""),
    END,
};

const PropRule patch_props[] = {
    P("XData", data, nullptr, ""), P("YData", data, nullptr, ""), P("ZData", data, nullptr, ""),
    P("Faces", data, nullptr, ""), P("Vertices", data, nullptr, ""),
    P("CData", data, nullptr, ""), P("FaceVertexCData", data, nullptr, ""),
    P("FaceColor", colorword, "flat|interp|none", "0 0 0"),
    P("EdgeColor", colorword, "flat|interp|none", "0 0 0"),
    P("CDataMapping", word, "scaled|direct", "'scaled'"),
    P("FaceLighting", word, "none|flat|gouraud|phong", "'flat'"),
    P("EdgeLighting", word, "none|flat|gouraud|phong", "'none'"),
    P("BackFaceLighting", word, "unlit|lit|reverselit", "'reverselit'"),
    P("AmbientStrength", number, nullptr, "0.3"),
    P("DiffuseStrength", number, nullptr, "0.6"),
    P("SpecularStrength", number, nullptr, "0.9"),
    P("SpecularExponent", number, nullptr, "10"),
    P("SpecularColorReflectance", number, nullptr, "1"),
    P("VertexNormals", data, nullptr, ""),
    STROKE_PROPS,
    END,
};

const PropRule surface_props[] = {
    P("XData", data, nullptr, ""), P("YData", data, nullptr, ""), P("ZData", data, nullptr, ""),
    P("CData", data, nullptr, ""),
    P("FaceColor", colorword, "flat|interp|none|texturemap", "'flat'"),
    P("EdgeColor", colorword, "flat|interp|none", "0 0 0"),
    P("CDataMapping", word, "scaled|direct", "'scaled'"),
    P("MeshStyle", word, "both|row|column", "'both'"),
    P("FaceLighting", word, "none|flat|gouraud|phong", "'flat'"),
    P("EdgeLighting", word, "none|flat|gouraud|phong", "'none'"),
    P("BackFaceLighting", word, "unlit|lit|reverselit", "'reverselit'"),
    P("AmbientStrength", number, nullptr, "0.3"),
    P("DiffuseStrength", number, nullptr, "0.6"),
    P("SpecularStrength", number, nullptr, "0.9"),
    P("SpecularExponent", number, nullptr, "10"),
    P("SpecularColorReflectance", number, nullptr, "1"),
    P("VertexNormals", data, nullptr, ""),
    P("NumContourLines", data, nullptr, "10"),
    P("ChartType", text, nullptr, "'surface'"),
    V("Size", 2, ""),
    STROKE_PROPS,
    END,
};

const PropRule image_props[] = {
    P("CData", data, nullptr, ""),
    P("XData", data, nullptr, ""), P("YData", data, nullptr, ""),
    P("CDataMapping", word, "direct|scaled", "'direct'"),
    END,
};

const PropRule text_props[] = {
    P("String", any, nullptr, ""),
    V("Position", 0, "0 0 0"),
    P("Color", color, nullptr, "0 0 0"),
    P("FontName", text, nullptr, "'Helvetica'"),
    P("FontSize", number, nullptr, "10"),
    P("FontWeight", word, "normal|bold|light|demi", "'normal'"),
    P("FontAngle", word, "normal|italic|oblique", "'normal'"),
    P("FontUnits", word, "points|normalized|inches|centimeters|pixels", "'points'"),
    P("HorizontalAlignment", word, "left|center|right", "'left'"),
    P("VerticalAlignment", word, "middle|top|cap|baseline|bottom", "'middle'"),
    P("Rotation", number, nullptr, "0"),
    P("Units", word, "data|normalized|pixels|inches|centimeters|points|characters", "'data'"),
    P("Interpreter", word, "none|tex", "'tex'"),
    P("EdgeColor", colorword, "none", "'none'"),
    P("BackgroundColor", colorword, "none", "'none'"),
    P("Editing", word, onoff, "'off'"),
    P("Extent", readonly, nullptr, ""),
    P("EraseMode", word, "normal|background|xor|none", "'normal'"),
    END,
};

const PropRule uicontrol_props[] = {
    P("Style", word, "pushbutton|togglebutton|radiobutton|checkbox|edit|text|slider|frame|listbox|popupmenu",
      "'pushbutton'"),
    P("String", any, nullptr, ""),
    P("Value", data, nullptr, "0"),
    P("Min", number, nullptr, "0"),
    P("Max", number, nullptr, "1"),
    V("Position", 4, "20 20 60 20"),
    P("Callback", text, nullptr, ""),
    P("Enable", word, "on|off|inactive", "'on'"),
    P("BackgroundColor", color, nullptr, "0.94 0.94 0.94"),
    P("ForegroundColor", color, nullptr, "0 0 0"),
    P("FontName", text, nullptr, "'Helvetica'"),
    P("FontSize", number, nullptr, "8"),
    P("FontWeight", word, "normal|bold|light|demi", "'normal'"),
    P("FontAngle", word, "normal|italic|oblique", "'normal'"),
    P("HorizontalAlignment", word, "left|center|right", "'center'"),
    P("ListboxTop", number, nullptr, "1"),
    V("SliderStep", 2, "0.01 0.1"),
    P("TooltipString", text, nullptr, ""),
    P("KeyPressFcn", text, nullptr, ""),
    P("Units", word, "pixels|normalized|inches|centimeters|points|characters", "'pixels'"),
    P("Extent", readonly, nullptr, ""),
    END,
};

const PropRule uimenu_props[] = {
    P("Label", text, nullptr, ""),
    P("Callback", text, nullptr, ""),
    P("Checked", word, onoff, "'off'"),
    P("Enable", word, onoff, "'on'"),
    P("Separator", word, onoff, "'off'"),
    P("Accelerator", text, nullptr, ""),
    P("Position", number, nullptr, "1"),
    P("ForegroundColor", color, nullptr, "0 0 0"),
    END,
};

const PropRule contextmenu_props[] = {
    P("Callback", text, nullptr, ""),
    V("Position", 2, "0 0"),
    END,
};

const PropRule* const root_list[] = {common, root_props, nullptr};
const PropRule* const figure_list[] = {common, figure_props, nullptr};
const PropRule* const axes_list[] = {common, axes_props, nullptr};
const PropRule* const line_list[] = {common, line_props, nullptr};
const PropRule* const patch_list[] = {common, patch_props, nullptr};
const PropRule* const surface_list[] = {common, surface_props, nullptr};
const PropRule* const image_list[] = {common, image_props, nullptr};
const PropRule* const text_list[] = {common, text_props, nullptr};
const PropRule* const uicontrol_list[] = {common, uicontrol_props, nullptr};
const PropRule* const uimenu_list[] = {common, uimenu_props, nullptr};
const PropRule* const contextmenu_list[] = {common, contextmenu_props, nullptr};

}  // namespace

const PropRule* const* rules_of(Kind k) {
    switch (k) {
        case Kind::root: return root_list;
        case Kind::figure: return figure_list;
        case Kind::axes: return axes_list;
        case Kind::line: return line_list;
        case Kind::patch: return patch_list;
        case Kind::surface: return surface_list;
        case Kind::text: return text_list;
        case Kind::image: return image_list;
        case Kind::uicontrol: return uicontrol_list;
        case Kind::uimenu: return uimenu_list;
        case Kind::uicontextmenu: return contextmenu_list;
    }
    return root_list;
}

const PropRule* find_rule(Kind k, const char* name) {
    for (const PropRule* const* list = rules_of(k); *list; ++list)
        for (const PropRule* s = *list; s->name; ++s)
            if (strcasecmp(s->name, name) == 0) return s;
    return nullptr;
}

Value parse_default(const char* def) {
    if (!def || !*def) return Value();
    if (def[0] == '\'') {
        std::string s(def + 1);
        if (!s.empty() && s.back() == '\'') s.pop_back();
        return Value::text(s);
    }
    std::vector<std::vector<double>> rows(1);
    const char* p = def;
    while (*p) {
        if (*p == ';') {
            rows.emplace_back();
            ++p;
            continue;
        }
        char* end;
        double v = std::strtod(p, &end);
        if (end == p) {
            ++p;
            continue;
        }
        rows.back().push_back(v);
        p = end;
    }
    int r = static_cast<int>(rows.size()), c = static_cast<int>(rows[0].size());
    Value out = Value::matrix(r, c);
    for (int i = 0; i < r; ++i)
        for (int j = 0; j < c && j < static_cast<int>(rows[i].size()); ++j) out.d[j * r + i] = rows[i][j];
    return out;
}

}  // namespace ae
