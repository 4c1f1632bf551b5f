#include "Plot.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <ostream>

namespace benchmarks {

namespace {

constexpr int columns = 3;
constexpr double panelWidth = 380.0;
constexpr double panelHeight = 200.0;
constexpr double left = 52.0; // width of the labels in a panel
constexpr double right = 12.0;
constexpr double top = 30.0;
constexpr double bottom = 26.0;
constexpr double legendHeight = 34.0;

constexpr const char* ourColour = "#0b63a5";
constexpr const char* theirColour = "#c2500a";

std::string escaped(const std::string& text) {
    std::string out;
    for (const char c : text) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        default:
            out += c;
        }
    }
    return out;
}

// A logarithmic axis of whole decades.
class Axis {
public:
    Axis(double low, double high, double from, double to)
        : m_low(std::floor(std::log10(low))), m_high(std::ceil(std::log10(high))), m_from(from),
          m_to(to) {
        if (m_high <= m_low)
            m_high = m_low + 1.0;
    }
    double at(double value) const {
        return m_from + (std::log10(value) - m_low) / (m_high - m_low) * (m_to - m_from);
    }
    template <class Draw> void forDecades(Draw draw) const {
        for (double decade = m_low; decade <= m_high; ++decade)
            draw(std::pow(10.0, decade));
    }

private:
    double m_low;
    double m_high;
    double m_from;
    double m_to;
};

std::string atomsLabel(double atoms) {
    const auto whole = [](double value) { return std::to_string(std::lround(value)); };
    return atoms >= 1e6   ? whole(atoms / 1e6) + " M"
           : atoms >= 1e3 ? whole(atoms / 1e3) + " k"
                          : whole(atoms);
}

std::string timeLabel(double seconds) {
    const auto whole = [](double value) { return std::to_string(std::lround(value)); };
    return seconds >= 1.0    ? whole(seconds) + " s"
           : seconds >= 1e-3 ? whole(seconds * 1e3) + " ms"
                             : whole(seconds * 1e6) + " µs";
}

void drawLine(std::ostream& out, const Curve& curve, double Curve::Sample::*time, const Axis& x,
              const Axis& y, const char* colour, const char* dashes) {
    out << "<polyline fill=\"none\" stroke=\"" << colour << "\" stroke-width=\"2\"" << dashes
        << " points=\"";
    for (const Curve::Sample& sample : curve.samples)
        if (sample.*time > 0.0)
            out << x.at(sample.atoms) << ',' << y.at(sample.*time) << ' ';
    out << "\"/>\n";
    for (const Curve::Sample& sample : curve.samples)
        if (sample.*time > 0.0)
            out << "<circle r=\"3\" fill=\"" << colour << "\" cx=\"" << x.at(sample.atoms)
                << "\" cy=\"" << y.at(sample.*time) << "\"/>\n";
}

void drawPanel(std::ostream& out, const Curve& curve, double atLeft, double atTop) {
    double fewest = std::numeric_limits<double>::max();
    double most = 0.0;
    double shortest = fewest;
    double longest = 0.0;
    for (const Curve::Sample& sample : curve.samples) {
        fewest = std::min(fewest, sample.atoms);
        most = std::max(most, sample.atoms);
        for (const double time : {sample.ours, sample.theirs > 0.0 ? sample.theirs : sample.ours}) {
            shortest = std::min(shortest, time);
            longest = std::max(longest, time);
        }
    }
    const double xEnd = atLeft + panelWidth - right;
    const double yEnd = atTop + panelHeight - bottom;
    const Axis x(fewest, most, atLeft + left, xEnd);
    const Axis y(shortest, longest, yEnd, atTop + top);
    out << "<text x=\"" << atLeft + 14.0 << "\" y=\"" << atTop + top - 10.0 << "\">"
        << escaped(curve.work) << "</text>\n";
    x.forDecades([&](double atoms) {
        out << "<path stroke=\"#ddd\" d=\"M" << x.at(atoms) << ' ' << atTop + top << "V" << yEnd
            << "\"/><text text-anchor=\"middle\" x=\"" << x.at(atoms) << "\" y=\"" << yEnd + 16.0
            << "\">" << atomsLabel(atoms) << "</text>\n";
    });
    y.forDecades([&](double seconds) {
        out << "<path stroke=\"#ddd\" d=\"M" << atLeft + left << ' ' << y.at(seconds) << "H" << xEnd
            << "\"/><text text-anchor=\"end\" x=\"" << atLeft + left - 6.0 << "\" y=\""
            << y.at(seconds) + 4.0 << "\">" << timeLabel(seconds) << "</text>\n";
    });
    if (!curve.peer.empty())
        drawLine(out, curve, &Curve::Sample::theirs, x, y, theirColour,
                 " stroke-dasharray=\"6 4\"");
    drawLine(out, curve, &Curve::Sample::ours, x, y, ourColour, "");
    if (!curve.peer.empty())
        out << "<text fill=\"" << theirColour << "\" text-anchor=\"end\" x=\"" << xEnd - 4.0
            << "\" y=\"" << yEnd - 6.0 << "\">" << escaped(curve.peer) << "</text>\n";
}

} // namespace

void drawPlots(std::ostream& out, const std::vector<Curve>& curves) {
    const auto rows = static_cast<double>((curves.size() + columns - 1) / columns);
    const double width = columns * panelWidth;
    const double height = legendHeight + rows * panelHeight;
    out << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " << width << ' ' << height
        << "\" font-family=\"sans-serif\" font-size=\"11\" fill=\"#222\">\n"
        << "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n"
        << "<text x=\"12\" y=\"22\" font-size=\"14\">Time over atoms: <tspan fill=\"" << ourColour
        << "\">ours</tspan>, and where there is one <tspan fill=\"" << theirColour
        << "\">the competitor (dashed)</tspan></text>\n";
    for (std::size_t i = 0; i != curves.size(); ++i)
        drawPanel(out, curves[i], static_cast<double>(i % columns) * panelWidth,
                  legendHeight + static_cast<double>(i / columns) * panelHeight);
    out << "</svg>\n";
}

} // namespace benchmarks
