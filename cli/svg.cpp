#include "cli/svg.hpp"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

#include "cli/report.hpp"

namespace korvel {

namespace {

constexpr double kPaddingFraction = 0.04;
constexpr int kMarginLeft = 80;
constexpr int kMarginRight = 30;
constexpr int kMarginTop = 60;
constexpr int kMarginBottom = 60;
constexpr int kTickCount = 8;
constexpr int kLegendRowHeight = 18;

Range padded(Range r) {
    if (!(r.span() > 0.0)) {
        r.lo -= 1.0;
        r.hi += 1.0;
    }
    const double pad = r.span() * kPaddingFraction;
    return {r.lo - pad, r.hi + pad};
}

std::string number(double v) { return fmt::format("{:.2f}", v); }

// Tick label with as many decimals as the tick step needs.
std::string tickText(double v, double step) {
    const int decimals = step >= 1.0 ? 0 : static_cast<int>(std::ceil(-std::log10(step)));
    return fixed(std::fabs(v) < step * 1e-9 ? 0.0 : v, decimals);
}

}  // namespace

void Range::include(double v) {
    lo = std::min(lo, v);
    hi = std::max(hi, v);
}

Range rangeOf(const std::vector<PlotPoint>& points, bool alongX) {
    Range r{0.0, 0.0};
    bool first = true;
    for (const PlotPoint& p : points) {
        const double v = alongX ? p.x : p.y;
        if (first) {
            r = {v, v};
            first = false;
        } else {
            r.include(v);
        }
    }
    return r;
}

std::vector<double> ticks(double lo, double hi, int target) {
    std::vector<double> out;
    const double span = hi - lo;
    if (!(span > 0.0) || target < 1) return out;
    const double rough = span / target;
    const double magnitude = std::pow(10.0, std::floor(std::log10(rough)));
    double step = magnitude;
    for (const double factor : {1.0, 2.0, 2.5, 5.0, 10.0}) {
        step = factor * magnitude;
        if (span / step <= target) break;
    }
    for (double t = std::ceil(lo / step) * step; t <= hi + step * 1e-9; t += step) out.push_back(t);
    return out;
}

std::string escapeXml(const std::string& text) {
    std::string out;
    for (const char c : text) {
        switch (c) {
            case '&': out += "&amp;"; break;
            case '<': out += "&lt;"; break;
            case '>': out += "&gt;"; break;
            case '"': out += "&quot;"; break;
            default: out += c;
        }
    }
    return out;
}

SvgPlot::SvgPlot(Range x, Range y, bool equalScale, int width, int height)
    : x_(padded(x)), y_(padded(y)), width_(width), height_(height) {
    const double plotWidth = width_ - kMarginLeft - kMarginRight;
    const double plotHeight = height_ - kMarginTop - kMarginBottom;
    scaleX_ = plotWidth / x_.span();
    scaleY_ = plotHeight / y_.span();
    if (equalScale) {
        // One scale for both axes; the window grows along the axis with room to spare.
        const double scale = std::min(scaleX_, scaleY_);
        const double growX = (plotWidth / scale - x_.span()) / 2.0;
        const double growY = (plotHeight / scale - y_.span()) / 2.0;
        x_ = {x_.lo - growX, x_.hi + growX};
        y_ = {y_.lo - growY, y_.hi + growY};
        scaleX_ = scaleY_ = scale;
    }
}

double SvgPlot::px(double x) const { return kMarginLeft + (x - x_.lo) * scaleX_; }
double SvgPlot::py(double y) const { return height_ - kMarginBottom - (y - y_.lo) * scaleY_; }

std::string SvgPlot::path(const std::vector<PlotPoint>& points) const {
    std::string d;
    for (const PlotPoint& p : points) {
        d += fmt::format("{},{} ", number(px(p.x)), number(py(p.y)));
    }
    return d;
}

void SvgPlot::title(const std::string& text, const std::string& subtitle) {
    frame_ += fmt::format("<text x=\"{}\" y=\"24\" font-size=\"18\" font-weight=\"bold\">{}</text>\n",
                         kMarginLeft, escapeXml(text));
    if (!subtitle.empty()) {
        frame_ += fmt::format("<text x=\"{}\" y=\"44\" font-size=\"13\" fill=\"#555\">{}</text>\n",
                             kMarginLeft, escapeXml(subtitle));
    }
}

void SvgPlot::axes(const std::string& xLabel, const std::string& yLabel) {
    const double left = kMarginLeft;
    const double right = width_ - kMarginRight;
    const double top = kMarginTop;
    const double bottom = height_ - kMarginBottom;
    frame_ += fmt::format(
        "<rect x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\" fill=\"none\" stroke=\"#444\"/>\n",
        left, top, right - left, bottom - top);
    const std::vector<double> xs = ticks(x_.lo, x_.hi, kTickCount);
    const double xStep = xs.size() > 1 ? xs[1] - xs[0] : 1.0;
    for (const double t : xs) {
        const double at = px(t);
        frame_ += fmt::format("<line x1=\"{0}\" y1=\"{1}\" x2=\"{0}\" y2=\"{2}\" stroke=\"#ddd\"/>\n"
                             "<text x=\"{0}\" y=\"{3}\" font-size=\"11\" text-anchor=\"middle\">{4}</text>\n",
                             number(at), top, bottom, bottom + 16, tickText(t, xStep));
    }
    const std::vector<double> ys = ticks(y_.lo, y_.hi, kTickCount);
    const double yStep = ys.size() > 1 ? ys[1] - ys[0] : 1.0;
    for (const double t : ys) {
        const double at = py(t);
        frame_ += fmt::format("<line x1=\"{1}\" y1=\"{0}\" x2=\"{2}\" y2=\"{0}\" stroke=\"#ddd\"/>\n"
                             "<text x=\"{3}\" y=\"{0}\" font-size=\"11\" text-anchor=\"end\" "
                             "dominant-baseline=\"middle\">{4}</text>\n",
                             number(at), left, right, left - 6, tickText(t, yStep));
    }
    frame_ += fmt::format("<text x=\"{}\" y=\"{}\" font-size=\"13\" text-anchor=\"middle\">{}</text>\n",
                         (left + right) / 2, height_ - 18, escapeXml(xLabel));
    frame_ += fmt::format("<text x=\"18\" y=\"{0}\" font-size=\"13\" text-anchor=\"middle\" "
                         "transform=\"rotate(-90 18 {0})\">{1}</text>\n",
                         (top + bottom) / 2, escapeXml(yLabel));
}

void SvgPlot::polyline(const std::vector<PlotPoint>& points, const std::string& colour,
                       double width, const std::string& dash) {
    if (points.size() < 2) return;
    body_ += fmt::format("<polyline fill=\"none\" stroke=\"{}\" stroke-width=\"{}\"{} points=\"{}\"/>\n",
                         colour, width,
                         dash.empty() ? "" : fmt::format(" stroke-dasharray=\"{}\"", dash),
                         path(points));
}

void SvgPlot::polygon(const std::vector<PlotPoint>& points, const std::string& fill,
                      double opacity) {
    if (points.size() < 3) return;
    body_ += fmt::format("<polygon fill=\"{}\" fill-opacity=\"{}\" stroke=\"none\" points=\"{}\"/>\n",
                         fill, opacity, path(points));
}

void SvgPlot::markers(const std::vector<PlotPoint>& points, const std::string& colour,
                      double radius) {
    for (const PlotPoint& p : points) {
        body_ += fmt::format("<circle cx=\"{}\" cy=\"{}\" r=\"{}\" fill=\"{}\"/>\n", number(px(p.x)),
                             number(py(p.y)), radius, colour);
    }
}

void SvgPlot::cross(PlotPoint at, const std::string& colour, double size) {
    const double x = px(at.x);
    const double y = py(at.y);
    body_ += fmt::format("<path d=\"M{} {} L{} {} M{} {} L{} {}\" stroke=\"{}\" stroke-width=\"2\"/>\n",
                         number(x - size), number(y - size), number(x + size), number(y + size),
                         number(x - size), number(y + size), number(x + size), number(y - size),
                         colour);
}

void SvgPlot::label(PlotPoint at, const std::string& text, const std::string& colour, int dx,
                    int dy) {
    body_ += fmt::format("<text x=\"{}\" y=\"{}\" font-size=\"11\" fill=\"{}\">{}</text>\n",
                         number(px(at.x) + dx), number(py(at.y) + dy), colour, escapeXml(text));
}

void SvgPlot::legend(const std::string& colour, const std::string& text) {
    const int y = kMarginTop + 14 + legendRows_ * kLegendRowHeight;
    const int x = width_ - kMarginRight - 220;
    frame_ += fmt::format("<rect x=\"{}\" y=\"{}\" width=\"216\" height=\"{}\" fill=\"white\" "
                         "fill-opacity=\"0.85\"/>\n",
                         x - 6, y - 13, kLegendRowHeight);
    frame_ += fmt::format("<rect x=\"{}\" y=\"{}\" width=\"14\" height=\"10\" fill=\"{}\"/>\n"
                         "<text x=\"{}\" y=\"{}\" font-size=\"12\">{}</text>\n",
                         x, y - 9, colour, x + 20, y, escapeXml(text));
    ++legendRows_;
}

std::string SvgPlot::str() const {
    // The data are clipped to the plot rectangle; titles, axes and legends are drawn over it.
    return fmt::format("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                       "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{0}\" height=\"{1}\" "
                       "viewBox=\"0 0 {0} {1}\" font-family=\"sans-serif\">\n"
                       "<defs><clipPath id=\"plot\"><rect x=\"{2}\" y=\"{3}\" width=\"{4}\" "
                       "height=\"{5}\"/></clipPath></defs>\n"
                       "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n"
                       "<g clip-path=\"url(#plot)\">\n{6}</g>\n{7}</svg>\n",
                       width_, height_, kMarginLeft, kMarginTop, width_ - kMarginLeft - kMarginRight,
                       height_ - kMarginTop - kMarginBottom, body_, frame_);
}

void SvgPlot::save(const std::string& target) const { OutputFile(target).write(str()); }

}  // namespace korvel
