// A small SVG plot writer shared by every korvel plot: a data rectangle mapped into a page,
// axes with ticks at round values, polylines, markers, filled polygons and labels.
#ifndef KORVEL_CLI_SVG_HPP
#define KORVEL_CLI_SVG_HPP

#include <string>
#include <vector>

namespace korvel {

struct PlotPoint {
    double x;
    double y;
};

struct Range {
    double lo;
    double hi;
    // The range widened to include v.
    void include(double v);
    double span() const { return hi - lo; }
};

// Ranges over a set of points (empty ranges become [v - 1, v + 1]).
Range rangeOf(const std::vector<PlotPoint>& points, bool alongX);

class SvgPlot {
public:
    static constexpr int kDefaultWidth = 1000;
    static constexpr int kDefaultHeight = 600;

    // The data window [x.lo, x.hi] x [y.lo, y.hi], padded by 4% on each side.  With
    // equalScale the two axes share one scale (plans); otherwise each fills the page (profiles).
    SvgPlot(Range x, Range y, bool equalScale = false, int width = kDefaultWidth,
            int height = kDefaultHeight);

    void title(const std::string& text, const std::string& subtitle = "");
    void axes(const std::string& xLabel, const std::string& yLabel);
    void polyline(const std::vector<PlotPoint>& points, const std::string& colour, double width,
                  const std::string& dash = "");
    void polygon(const std::vector<PlotPoint>& points, const std::string& fill, double opacity);
    void markers(const std::vector<PlotPoint>& points, const std::string& colour, double radius);
    void cross(PlotPoint at, const std::string& colour, double size);
    void label(PlotPoint at, const std::string& text, const std::string& colour = "#222",
               int dx = 4, int dy = -6);
    // A legend entry (coloured swatch and text) in the top-right corner.
    void legend(const std::string& colour, const std::string& text);

    std::string str() const;
    void save(const std::string& path) const;  // "-" writes standard output

    double xScale() const { return scaleX_; }
    double yScale() const { return scaleY_; }

private:
    double px(double x) const;
    double py(double y) const;
    std::string path(const std::vector<PlotPoint>& points) const;

    Range x_;
    Range y_;
    int width_;
    int height_;
    double scaleX_ = 1.0;
    double scaleY_ = 1.0;
    int legendRows_ = 0;
    std::string body_;   // data, clipped to the plot rectangle
    std::string frame_;  // titles, axes and legends
};

// Round tick positions covering [lo, hi], about `target` of them.
std::vector<double> ticks(double lo, double hi, int target);

// Text made safe inside SVG markup.
std::string escapeXml(const std::string& text);

}  // namespace korvel

#endif  // KORVEL_CLI_SVG_HPP
