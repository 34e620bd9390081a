// A vertical alignment as korvel reports and draws it: IPs joined by straight grades, each
// interior IP rounded by a symmetric parabolic curve of its length.
#ifndef KORVEL_CLI_ALIGNMENT_HPP
#define KORVEL_CLI_ALIGNMENT_HPP

#include <vector>

namespace korvel {

struct VerticalIp {
    double station;
    double level;
    double curveLength;
};

class VerticalAlignment {
public:
    explicit VerticalAlignment(std::vector<VerticalIp> ips) : ips_(std::move(ips)) {}
    const std::vector<VerticalIp>& ips() const { return ips_; }
    // Grade into and out of IP i (rise over run; 0 where there is no neighbour).
    double gradeIn(std::size_t i) const;
    double gradeOut(std::size_t i) const;
    // Level at station x (the first or last level beyond the ends).
    double levelAt(double x) const;

private:
    std::vector<VerticalIp> ips_;
};

}  // namespace korvel

#endif  // KORVEL_CLI_ALIGNMENT_HPP
