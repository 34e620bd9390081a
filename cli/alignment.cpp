#include "cli/alignment.hpp"

#include <algorithm>
#include <cmath>

namespace korvel {

double VerticalAlignment::gradeIn(std::size_t i) const {
    if (i == 0 || i >= ips_.size()) return 0.0;
    return (ips_[i].level - ips_[i - 1].level) / (ips_[i].station - ips_[i - 1].station);
}

double VerticalAlignment::gradeOut(std::size_t i) const {
    if (i + 1 >= ips_.size()) return 0.0;
    return (ips_[i + 1].level - ips_[i].level) / (ips_[i + 1].station - ips_[i].station);
}

double VerticalAlignment::levelAt(double x) const {
    if (ips_.empty()) return 0.0;
    if (x <= ips_.front().station) return ips_.front().level;
    if (x >= ips_.back().station) return ips_.back().level;
    // The IP at or before x, and the next one: x lies on the curve of one of them or on the
    // grade between.
    const auto next = std::upper_bound(ips_.begin(), ips_.end(), x,
                                       [](double s, const VerticalIp& ip) { return s < ip.station; });
    const std::size_t j = static_cast<std::size_t>(next - ips_.begin());
    for (const std::size_t i : {j - 1, j}) {
        if (i == 0 || i + 1 >= ips_.size()) continue;
        const VerticalIp& ip = ips_[i];
        const double half = ip.curveLength / 2.0;
        if (half > 0.0 && std::fabs(x - ip.station) <= half) {
            const double g1 = gradeIn(i);
            const double g2 = gradeOut(i);
            const double t = x - (ip.station - half);
            return ip.level - g1 * half + g1 * t + (g2 - g1) * t * t / (2.0 * ip.curveLength);
        }
    }
    const VerticalIp& a = ips_[j - 1];
    return a.level + gradeOut(j - 1) * (x - a.station);
}

}  // namespace korvel
