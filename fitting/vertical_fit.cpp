// Vertical profile best fit: a greedy envelope fit of grades and parabolic vertical curves to a
// surveyed longitudinal profile, and the least-squares fit of a single vertical curve.
//
// The IP table is kept in station order.  Two observations keep the fit fast on long surveys
// without changing any number it produces:
//   - an IP's grades and curve depend only on its neighbours, so an insertion or an overwrite
//     recomputes the IPs next to it rather than the whole table;
//   - evaluating the profile at a station only needs the IPs whose curve can reach it: with H
//     an upper bound of every half curve length, those lie within [x - H, x + H], found by
//     binary search, and are visited in table order so the first match is the one a scan of
//     the whole table would find.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "base/boundary.hpp"
#include "base/heap.hpp"
#include "base/number_text.hpp"
#include "base/optional_output.hpp"
#include "base/platform.hpp"
#include "korvelbase/bestfit_vertical.h"
#include "korvelbase/mem.h"

namespace {

using kb::fixedText;

constexpr double kMissingBelow = -998.0;      // an envelope value below this is "no value"
constexpr double kMergeDistance = 0.001;      // a new IP this close to an old one replaces it
constexpr double kSmallestStationStep = 0.0001;
constexpr double kZeroCurveSubstitute = 0.0001;  // a zero curve length in the parabola term
constexpr double kFilterStep = 0.1;           // percent of grade change per filtering pass
constexpr double kLowestFilterValue = 0.1;
constexpr double kPercent = 100.0;
constexpr int kRoundedLengthDecimals = 3;
// Filtering passes are bounded, though ordinary filter values (a few percent) need a few dozen:
// a huge filter value would otherwise mean billions of passes (and one so large that
// subtracting 0.1 leaves it unchanged, endless ones).
constexpr int kMostFilterPasses = 1000;

// The parameters of the next runs; they persist between runs, as set by the initialise call.
struct Parameters {
    double upTol = 0.0;
    double loTol = 0.0;
    double hog = 0.0;
    double sag = 0.0;
    double vcMinimumLength = 0.0;
    double cogFilterValue = 0.0;
    int startTie = 0;
    int endTie = 0;
    int debug = 0;
};
Parameters storedParameters;

bool isMissing(double envelopeValue) { return envelopeValue < kMissingBelow; }

double stationStep(double ds) { return std::fabs(ds) < kSmallestStationStep ? kSmallestStationStep : ds; }

// A length rounded through its "%.3f" text and read back, which fixes the stored value.
double roundedThroughText(double value) {
    const kb::String text = fixedText(value, kRoundedLengthDecimals);
    double back = value;
    std::from_chars(text.data(), text.data() + text.size(), back);
    return back;
}

// The trace file of a run with the debug flag 1; every call is a no-op when tracing is off.
class Trace {
public:
    explicit Trace(bool wanted) {
        if (wanted) file_ = std::fopen(kb::platform::verticalFitTracePath(), "w");
    }
    ~Trace() {
        if (file_ != nullptr) std::fclose(file_);
    }
    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;

    bool on() const { return file_ != nullptr; }
    void write(const kb::String& text) const {
        if (file_ != nullptr) std::fwrite(text.data(), 1, text.size(), file_);
    }

private:
    std::FILE* file_ = nullptr;
};

struct Ip {
    double station;
    double level;
    double length;
    int keepLength;  // 1: keep the present length; 0: recompute it from the K values
    double gradeIn;
    double gradeOut;
    double bvcStation;
    double evcStation;
    double bvcLevel;
    double evcLevel;
};

// The IP table in station order, stored with a gap (a gap buffer): an insertion moves the gap
// to its position and fills one slot.  A scan inserts at increasing positions, so the gap
// follows it and a whole scan moves each IP at most once, where a plain array would shift the
// whole tail at every insertion.
class IpTable {
public:
    std::size_t size() const { return slots_.size() - gap_; }
    Ip& operator[](std::size_t i) { return slots_[physical(i)]; }
    const Ip& operator[](std::size_t i) const { return slots_[physical(i)]; }
    Ip& front() { return (*this)[0]; }
    Ip& back() { return (*this)[size() - 1]; }

    void insert(std::size_t at, const Ip& ip) {
        if (gap_ == 0) grow();
        moveGapTo(at);
        slots_[gapStart_] = ip;
        ++gapStart_;
        --gap_;
    }

    // Keeps, in order, the IPs for which keep(index, ip) is true.
    template <typename Keep>
    void keepIf(Keep keep) {
        moveGapTo(size());
        std::size_t kept = 0;
        for (std::size_t i = 0; i < gapStart_; ++i) {
            if (keep(i, slots_[i])) slots_[kept++] = slots_[i];
        }
        gap_ += gapStart_ - kept;
        gapStart_ = kept;
    }

    // Index of the first IP whose station is not below s (size() when none).
    std::size_t firstAtOrAbove(double s) const { return searchBetween(s, 0, size()); }

    // The same, searched outward from a hint (galloping), so that a scan moving forward a few
    // IPs at a time pays for the distance moved rather than for the whole table.
    std::size_t firstAtOrAbove(double s, std::size_t hint) const {
        const std::size_t n = size();
        if (hint >= n) hint = n == 0 ? 0 : n - 1;
        if (n == 0) return 0;
        std::size_t step = 1;
        if ((*this)[hint].station < s) {
            std::size_t lo = hint;  // station(lo) < s
            while (lo + step < n && (*this)[lo + step].station < s) {
                lo += step;
                step *= 2;
            }
            return searchBetween(s, lo + 1, lo + step < n ? lo + step + 1 : n);
        }
        std::size_t hi = hint;  // station(hi) >= s
        while (hi >= step && !((*this)[hi - step].station < s)) {
            hi -= step;
            step *= 2;
        }
        return searchBetween(s, hi >= step ? hi - step : 0, hi);
    }

private:
    // Binary search for the first station not below s within [lo, hi).
    std::size_t searchBetween(double s, std::size_t lo, std::size_t hi) const {
        while (lo < hi) {
            const std::size_t mid = lo + (hi - lo) / 2;
            if ((*this)[mid].station < s) {
                lo = mid + 1;
            } else {
                hi = mid;
            }
        }
        return lo;
    }

    std::size_t physical(std::size_t i) const { return i < gapStart_ ? i : i + gap_; }

    void moveGapTo(std::size_t at) {
        Ip* data = slots_.data();
        if (at < gapStart_) {
            std::memmove(data + at + gap_, data + at, (gapStart_ - at) * sizeof(Ip));
        } else if (at > gapStart_) {
            std::memmove(data + gapStart_, data + gapStart_ + gap_, (at - gapStart_) * sizeof(Ip));
        }
        gapStart_ = at;
    }

    void grow() {
        const std::size_t used = size();
        moveGapTo(used);
        const std::size_t added = used < 16 ? 16 : used;
        slots_.resize(slots_.size() + added);
        gap_ += added;
    }

    kb::Vector<Ip> slots_;
    std::size_t gapStart_ = 0;
    std::size_t gap_ = 0;
};

class VerticalFit {
public:
    VerticalFit(const Parameters& parameters, const double* stations, const double* levels,
                int count)
        : p_(parameters), trace_(parameters.debug == 1) {
        station_.assign(stations, stations + count);
        level_.assign(levels, levels + count);
        upper_.resize(station_.size());
        lower_.resize(station_.size());
    }

    void run() {
        traceParameters();
        loadEnvelopes();
        if (!findLimits()) return;
        trace_.write("Kestrum - Part 2. Outer Iteration - Select Points To Insert IP's \n");
        int insertions = 0;
        scan("Outer Iteration ", insertions);
        trace_.write("Primary Fit Complete\n\n");
        filter();
        curves();
        if (overlap_) trace_.write("Overlapping Vertical Curve Lengths Have Been Modified.\n");
        traceTable("FINAL RESULTS :");
    }

    const IpTable& ips() const { return ips_; }

private:
    // ---- stages ----------------------------------------------------------------------------

    void traceParameters() const {
        if (!trace_.on()) return;
        trace_.write("UPTol(minOffset): " + fixedText(p_.upTol, 3) + " LOTol(minOffset): " +
                     fixedText(p_.loTol, 3) + " \n");
        trace_.write("Hog  (maxRadius): " + fixedText(p_.hog, 3) + " Sag (maxRad/2.0): " +
                     fixedText(p_.sag, 3) + " \n");
        trace_.write("VCMinimumLength (maxOffset): " + fixedText(p_.vcMinimumLength, 3) + " \n");
        trace_.write("COG Filter Val (PCPTRadius): " + fixedText(p_.cogFilterValue, 3) + " \n");
    }

    void loadEnvelopes() {
        for (std::size_t k = 0; k < station_.size(); ++k) {
            upper_[k] = level_[k] + p_.upTol;
            lower_[k] = level_[k] - p_.loTol;
        }
        if (!trace_.on()) return;
        trace_.write("The LongLen = " + fixedText(station_.back() - station_.front(), 3) + " : \n");
        trace_.write("The Envelopes : \n");
        for (std::size_t k = 0; k < station_.size(); ++k) {
            trace_.write(kb::integerText(k + 1) + "\tSta: " + fixedText(station_[k], 5) +
                         "\tUpper: " + fixedText(upper_[k], 5) + "\tLower: " +
                         fixedText(lower_[k], 5) + "\n");
        }
    }

    // The middle of point k's envelope; false when both envelope values are missing.
    bool middle(std::size_t k, double& value) const {
        const bool noUpper = isMissing(upper_[k]);
        const bool noLower = isMissing(lower_[k]);
        if (noUpper && noLower) return false;
        value = noUpper ? lower_[k] : (noLower ? upper_[k] : (upper_[k] + lower_[k]) / 2.0);
        return true;
    }

    bool findLimits() {
        trace_.write("Kestrum - Part 1. Find the Limits of the controls \n");
        const std::size_t n = station_.size();
        double value = 0.0;
        std::size_t first = 0;
        while (first < n && !middle(first, value)) ++first;
        if (first == n) return false;
        std::size_t last = n - 1;
        while (!middle(last, value)) --last;
        firstLimit_ = first;
        lastLimit_ = last;
        middle(first, value);
        addIp(station_[first], value, 0);
        middle(last, value);
        addIp(station_[last], value, 0);
        traceTable("Base Gradient Established");
        return true;
    }

    // One scan from the first limit to the last: each point whose envelope the profile leaves
    // gets an IP at its envelope middle.  Returns the number of IPs added.
    int scan(const char* label, int& counter) {
        int added = 0;
        for (std::size_t k = firstLimit_; k <= lastLimit_; ++k) {
            if (isMissing(upper_[k]) || isMissing(lower_[k])) continue;
            if (upper_[k] < lower_[k]) continue;  // an inverted envelope is skipped
            const double z = evaluate(station_[k]);
            if (z > upper_[k] || z < lower_[k]) {
                double value = 0.0;
                middle(k, value);
                addIp(station_[k], value, 1);
                ++added;
                ++counter;
                if (trace_.on()) traceTable(label + kb::integerText(counter));
            }
        }
        return added;
    }

    void filter() {
        trace_.write("Kestrum - Part 3. Filter Out Small COG IP's from  1.0  to 0.1 percent\n");
        double filterValue = p_.cogFilterValue;
        for (int pass = 1; pass <= kMostFilterPasses; ++pass) {
            const std::size_t interiorBefore = ips_.size() - 2;
            const std::size_t removed = removeSmallGradeChanges(filterValue);
            if (trace_.on()) traceTable("\tFilter Value = " + fixedText(filterValue, 5) + " Iteration " +
                       kb::integerText(pass));
            if (removed == 0) {
                trace_.write("Filtering Complete\n\n");
                return;
            }
            int insertions = 0;
            // Rescans until one adds nothing: every data point can take at most one IP.
            for (std::size_t rescan = 0; rescan <= station_.size() + 1; ++rescan) {
                if (scan("\tFilter Iteration ", insertions) == 0) break;
            }
            filterValue -= kFilterStep;
            if (!(filterValue > kLowestFilterValue)) return;
            trace_.write("\tThis Filter Iteration Done\n\n");
            if (removed == interiorBefore && !trace_.on()) skipRepeatedPasses(filterValue, pass);
        }
    }

    // After a pass that removed every interior IP the table was rebuilt from the two limits
    // alone, so it no longer depends on the filter value.  While the filter value stays at or
    // above every grade change of that table, each further pass would again remove everything
    // and rebuild the same table: those passes change nothing but the filter value, which is
    // stepped down here exactly as they would step it.
    void skipRepeatedPasses(double& filterValue, int& pass) {
        if (ips_.size() < 3) return;
        double largestChange = 0.0;
        for (std::size_t i = 1; i + 1 < ips_.size(); ++i) {
            largestChange = std::max(largestChange, std::fabs(ips_[i].gradeIn - ips_[i].gradeOut) * kPercent);
        }
        while (pass < kMostFilterPasses && largestChange <= filterValue) {
            const double next = filterValue - kFilterStep;
            if (!(next > kLowestFilterValue)) return;  // the last pass runs for real
            filterValue = next;
            ++pass;
        }
    }

    std::size_t removeSmallGradeChanges(double filterValue) {
        if (ips_.size() < 3) return 0;
        const std::size_t before = ips_.size();
        // The ends always stay; an interior IP goes when its grade change is at most the value.
        ips_.keepIf([&](std::size_t i, const Ip& ip) {
            return i == 0 || i + 1 == before ||
                   std::fabs(ip.gradeIn - ip.gradeOut) * kPercent > filterValue;
        });
        recomputeAll();
        return before - ips_.size();
    }

    void curves() {
        trace_.write("Kestrum - Part 4. IP's located .. now calculate the Mid-Ordinates(+/-)\n");
        for (std::size_t i = 0; i < ips_.size(); ++i) ips_[i].keepLength = 0;
        recomputeAll();
        traceTable("Full K Values Used");
        removeOverlaps();
        traceTable("Overlaps Removed");
        correctMidOrdinates();
        tieEnds();
        recomputeAll();
    }

    void removeOverlaps() {
        const std::size_t m = ips_.size();
        ips_.front().length = 0.0;
        ips_.back().length = 0.0;
        for (std::size_t i = 1; i + 1 < m; ++i) {
            const double before = ips_[i].station - ips_[i - 1].station;
            const double after = ips_[i + 1].station - ips_[i].station;
            double& length = ips_[i].length;
            if (ips_[i - 1].length / 2.0 + length / 2.0 > before) {
                overlap_ = true;
                length = i == 1 ? 2.0 * before : before;
            }
            if (ips_[i + 1].length / 2.0 + length / 2.0 > after) {
                overlap_ = true;
                if (length > after) length = after;
            }
        }
        for (std::size_t i = 0; i < ips_.size(); ++i) {
            ips_[i].keepLength = 1;
            ips_[i].length = roundedThroughText(ips_[i].length);
        }
        recomputeAll(true);
    }

    // Raises each interior IP by its curve's mid-ordinate, all measured before any is moved.
    void correctMidOrdinates() {
        const std::size_t m = ips_.size();
        kb::Vector<double> correction(m, 0.0);
        for (std::size_t i = 1; i + 1 < m; ++i) {
            correction[i] = ips_[i].level - evaluate(ips_[i].station);
        }
        for (std::size_t i = 1; i + 1 < m; ++i) ips_[i].level += correction[i];
    }

    // Puts IP `target` on the line through data points a and b.
    void tieTo(std::size_t target, std::size_t a, std::size_t b) {
        const double dx = stationStep(station_[b] - station_[a]);
        ips_[target].level =
            level_[a] + (ips_[target].station - station_[a]) * (level_[b] - level_[a]) / dx;
    }

    void tieEnds() {
        const std::size_t n = station_.size();
        if (ips_.size() < 3 || n < 2) return;
        if (p_.startTie != 0) tieTo(1, 0, 1);
        if (p_.endTie != 0) tieTo(ips_.size() - 2, n - 2, n - 1);
    }

    // ---- the IP table ------------------------------------------------------------------------

    void addIp(double station, double level, int keepLength) {
        const std::size_t m = ips_.size();
        const Ip fresh{station, level, 0.0, keepLength, 0.0, 0.0, station, station, level, level};
        // The first IP (in table order) lying within the merge distance is overwritten.
        std::size_t from = ips_.firstAtOrAbove(station - kMergeDistance);
        from = from > 0 ? from - 1 : 0;
        for (std::size_t i = from; i < m && i <= from + 2; ++i) {
            if (std::fabs(ips_[i].station - station) <= kMergeDistance) {
                ips_[i] = fresh;
                recomputeAround(i);
                return;
            }
        }
        const std::size_t at = m >= 2 ? ips_.firstAtOrAbove(station) : m;
        ips_.insert(at, fresh);
        recomputeAround(at);
    }

    void recomputeAround(std::size_t i) {
        const std::size_t first = i > 0 ? i - 1 : 0;
        const std::size_t last = std::min(i + 1, ips_.size() - 1);
        for (std::size_t k = first; k <= last; ++k) recompute(k);
    }

    // exact: rebuild the bound of half curve lengths from the lengths now stored.
    void recomputeAll(bool exact = false) {
        if (exact) maxHalfLength_ = 0.0;
        for (std::size_t k = 0; k < ips_.size(); ++k) recompute(k);
    }

    // Grades, curve length and curve ends of IP i from its neighbours.
    void recompute(std::size_t i) {
        const std::size_t m = ips_.size();
        Ip& ip = ips_[i];
        ip.gradeIn = i > 0 ? (ip.level - ips_[i - 1].level) /
                                 stationStep(ip.station - ips_[i - 1].station)
                           : 0.0;
        ip.gradeOut = i + 1 < m ? (ips_[i + 1].level - ip.level) /
                                      stationStep(ips_[i + 1].station - ip.station)
                                : 0.0;
        if (i == 0 || i + 1 == m) {
            // The ends have no curve: both curve ends are the IP itself.
            ip.bvcStation = ip.evcStation = ip.station;
            ip.bvcLevel = ip.evcLevel = ip.level;
            return;
        }
        if (ip.keepLength == 1) {
            if (ip.length < 0.0) ip.length = 0.0;
        } else {
            const double change = (ip.gradeOut - ip.gradeIn) * kPercent;
            ip.length = std::fabs(change) * (change > 0.0 ? p_.sag : p_.hog);
            if (ip.length < p_.vcMinimumLength) ip.length = p_.vcMinimumLength;
        }
        const double half = ip.length / 2.0;
        ip.bvcStation = ip.station - half;
        ip.evcStation = ip.station + half;
        ip.bvcLevel = ip.level - ip.gradeIn * half;
        ip.evcLevel = ip.level + ip.gradeOut * half;
        if (half > maxHalfLength_) maxHalfLength_ = half;
    }

    // ---- evaluation ------------------------------------------------------------------------

    // Level of the alignment at station x; 0 outside the IPs.
    double evaluate(double x) const {
        const std::size_t m = ips_.size();
        // Only IPs with a station in [x - H, x + H] (and the one before) can reach x; a small
        // margin keeps rounding from excluding one.
        const double reach = maxHalfLength_ + 1e-9 * (std::fabs(x) + maxHalfLength_) + 1e-12;
        std::size_t i = ips_.firstAtOrAbove(x - reach, evaluationHint_);
        evaluationHint_ = i;
        i = i > 0 ? i - 1 : 0;
        for (; i < m && !(ips_[i].station - reach > x); ++i) {
            const Ip& ip = ips_[i];
            if (ip.bvcStation <= x && x <= ip.evcStation) {
                const double length = i == 0 || i + 1 == m || ip.length == 0.0
                                          ? kZeroCurveSubstitute
                                          : ip.length;
                const double dx = x - ip.bvcStation;
                return ip.bvcLevel + ip.gradeIn * dx - (ip.gradeIn - ip.gradeOut) * dx * dx / 2.0 / length;
            }
            if (i + 1 < m && ip.evcStation <= x && x <= ips_[i + 1].bvcStation) {
                return ip.level + ip.gradeOut * (x - ip.station);
            }
        }
        return 0.0;
    }

    // ---- trace -------------------------------------------------------------------------------

    void traceTable(const kb::String& message) const {
        if (!trace_.on()) return;
        trace_.write(message + "\n");
        const std::size_t m = ips_.size();
        for (std::size_t i = 0; i < m; ++i) {
            const Ip& ip = ips_[i];
            const double change = (ip.gradeOut - ip.gradeIn) * kPercent;
            const bool interior = i > 0 && i + 1 < m;
            const double k = interior && change != 0.0 ? ip.length / std::fabs(change) : 0.0;
            trace_.write("\t\tIP Number: " + kb::integerText(i + 1) + "\tChainage: " +
                         fixedText(ip.station, 4) + "\tLevel: " + fixedText(ip.level, 4) +
                         "\tVCLength: " + fixedText(ip.length, 4) + "\tVCKVal: " +
                         fixedText(k, 4) + "\n");
        }
    }

    const Parameters& p_;
    Trace trace_;
    kb::Vector<double> station_;
    kb::Vector<double> level_;
    kb::Vector<double> upper_;
    kb::Vector<double> lower_;
    IpTable ips_;
    std::size_t firstLimit_ = 0;
    std::size_t lastLimit_ = 0;
    double maxHalfLength_ = 0.0;  // upper bound of every curve's half length
    mutable std::size_t evaluationHint_ = 0;  // where the last evaluation started (a hint only)
    bool overlap_ = false;
};

void clearOutputs(double** s, double** l, double** v, int* count) {
    *s = nullptr;
    *l = nullptr;
    *v = nullptr;
    *count = 0;
}

// Copies one field of every IP into a new caller-owned array.
template <typename Field>
double* copyField(const IpTable& ips, Field field) {
    auto* out = static_cast<double*>(qmMem_calloc(ips.size(), sizeof(double)));
    if (out == nullptr) return nullptr;
    for (std::size_t i = 0; i < ips.size(); ++i) out[i] = field(ips[i]);
    return out;
}

int computeProfile(double** ipStations, double** ipLevels, double** curveLengths, int* ipCount,
                   const double* stations, const double* levels, int count) {
    clearOutputs(ipStations, ipLevels, curveLengths, ipCount);
    if (count < 2) return ERR_FAILURE;
    for (int k = 0; k < count; ++k) {
        // The IP table is kept in station order: stations must be finite and never decrease.
        if (!std::isfinite(stations[k]) || (k > 0 && stations[k] < stations[k - 1])) {
            return ERR_FAILURE;
        }
    }
    VerticalFit fit(storedParameters, stations, levels, count);
    fit.run();
    const IpTable& ips = fit.ips();
    if (ips.size() < 2) return ERR_FAILURE;
    double* s = copyField(ips, [](const Ip& ip) { return ip.station; });
    double* l = copyField(ips, [](const Ip& ip) { return ip.level; });
    double* v = copyField(ips, [](const Ip& ip) { return ip.length; });
    if (s == nullptr || l == nullptr || v == nullptr) {
        qmMem_free(s);
        qmMem_free(l);
        qmMem_free(v);
        return ERR_FAILURE;
    }
    *ipStations = s;
    *ipLevels = l;
    *curveLengths = v;
    *ipCount = static_cast<int>(ips.size());
    return 0;
}

// ---- single vertical curve -----------------------------------------------------------------

constexpr double kSmallestSpan = 1e-5;
constexpr int kMostCurveIterations = 15;
constexpr double kCurveConvergence = 0.01;
constexpr int kValuesPerPoint = 4;  // station, its deviation, level, its deviation

double spanStep(double d) { return std::fabs(d) < kSmallestSpan ? kSmallestSpan : d; }

struct CurvePoint {
    double x;
    double sx;
    double y;
    double sy;
};

CurvePoint pointAt(const double* points, int k) {
    const double* p = points + static_cast<std::ptrdiff_t>(k) * kValuesPerPoint;
    return {p[0], p[1], p[2], p[3]};
}

// Solves the symmetric 3x3 system n * d = u by Cramer's rule; false when singular.
bool solve3(const double n[3][3], const double u[3], double d[3]) {
    const double det = n[0][0] * (n[1][1] * n[2][2] - n[1][2] * n[2][1]) -
                       n[0][1] * (n[1][0] * n[2][2] - n[1][2] * n[2][0]) +
                       n[0][2] * (n[1][0] * n[2][1] - n[1][1] * n[2][0]);
    if (!(std::fabs(det) > 0.0) || !std::isfinite(det)) return false;
    for (int c = 0; c < 3; ++c) {
        double m[3][3];
        for (int r = 0; r < 3; ++r) {
            for (int k = 0; k < 3; ++k) m[r][k] = k == c ? u[r] : n[r][k];
        }
        d[c] = (m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
                m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
                m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0])) /
               det;
    }
    return true;
}

// One correction of the combined adjustment.  M = K Q K^T is diagonal (each condition
// involves one point's two observations), so D^T M^-1 D and D^T M^-1 w are sums over points.
bool curveCorrection(const double* points, int count, const double abc[3], double d[3]) {
    double n[3][3] = {};
    double u[3] = {};
    for (int k = 0; k < count; ++k) {
        const CurvePoint p = pointAt(points, k);
        const double slope = 2.0 * abc[0] * p.x + abc[1];
        const double m = slope * slope * p.sx * p.sx + p.sy * p.sy;
        if (!(m > 0.0) || !std::isfinite(m)) return false;
        const double row[3] = {p.x * p.x, p.x, 1.0};
        const double w = abc[0] * p.x * p.x + abc[1] * p.x + abc[2] - p.y;
        for (int r = 0; r < 3; ++r) {
            u[r] += row[r] * w / m;
            for (int c = 0; c < 3; ++c) n[r][c] += row[r] * row[c] / m;
        }
    }
    return solve3(n, u, d);
}

}  // namespace

extern "C" {

void qmBestFit_verticalProfileInitialize(double upTol, double loTol, double hog, double sag,
                                         double vcMinimumLength, double cogFilterValue,
                                         int startTie, int endTie, int debug) noexcept {
    storedParameters = {upTol, loTol, hog, sag, vcMinimumLength, cogFilterValue,
                        startTie, endTie, debug};
}

int qmBestFit_verticalComputeProfile(double** ipStations, double** ipLevels,
                                     double** curveLengths, int* ipCount, const double* stations,
                                     const double* levels, int count) noexcept {
    if (ipStations == nullptr || ipLevels == nullptr || curveLengths == nullptr ||
        ipCount == nullptr) {
        return ERR_FAILURE;
    }
    clearOutputs(ipStations, ipLevels, curveLengths, ipCount);
    if (stations == nullptr || levels == nullptr) return ERR_FAILURE;
    return kb::callGuarded(ERR_FAILURE, [&] {
        return computeProfile(ipStations, ipLevels, curveLengths, ipCount, stations, levels, count);
    });
}

int qmPoint_verticalComputeProfile(Point3d** out, int* outCount, const Point3d* points,
                                   int count, int distanceMode, double upTol, double loTol,
                                   double hog, double sag, double vcMinimumLength,
                                   double cogFilterValue, int startTie, int endTie,
                                   int debug) noexcept {
    if (out == nullptr || outCount == nullptr || points == nullptr || count < 2) return ERR_FAILURE;
    return kb::callGuarded(ERR_FAILURE, [&] {
        kb::Vector<double> stations(static_cast<std::size_t>(count));
        kb::Vector<double> levels(static_cast<std::size_t>(count));
        double along = 0.0;
        for (int i = 0; i < count; ++i) {
            const Point3d& p = points[i];
            if (distanceMode != 0) {
                if (i > 0) along += std::hypot(p.x - points[i - 1].x, p.y - points[i - 1].y);
                stations[static_cast<std::size_t>(i)] = along;
                levels[static_cast<std::size_t>(i)] = p.z;
            } else {
                stations[static_cast<std::size_t>(i)] = p.x - points[0].x;
                levels[static_cast<std::size_t>(i)] = p.y;
            }
        }
        qmBestFit_verticalProfileInitialize(upTol, loTol, hog, sag, vcMinimumLength,
                                            cogFilterValue, startTie, endTie, debug);
        double* s = nullptr;
        double* l = nullptr;
        double* v = nullptr;
        int m = 0;
        const int result = qmBestFit_verticalComputeProfile(&s, &l, &v, &m, stations.data(),
                                                            levels.data(), count);
        if (result == 0) {
            auto* ips = static_cast<Point3d*>(qmMem_calloc(static_cast<std::size_t>(m), sizeof(Point3d)));
            if (ips == nullptr) {
                qmMem_free(s);
                qmMem_free(l);
                qmMem_free(v);
                return ERR_FAILURE;
            }
            const double shift = distanceMode != 0 ? 0.0 : points[0].x;
            for (int i = 0; i < m; ++i) ips[i] = {s[i] + shift, l[i], v[i]};
            qmMem_free(s);
            qmMem_free(l);
            qmMem_free(v);
            *out = ips;
            *outCount = m;
        }
        return result;
    });
}

int qmBestFit_vertCurveCalc(double* a, double* b, double* c, double* startGrade,
                            double* endGrade, double* length, double* rateOfGradeChange,
                            double* residualMeasure, int count, const double* points) noexcept {
    double* outputs[] = {a, b, c, startGrade, endGrade, length, rateOfGradeChange, residualMeasure};
    for (double* output : outputs) {
        if (output == nullptr) return ERR_FAILURE;
    }
    if (count < 3) return 1;
    if (points == nullptr) return ERR_FAILURE;
    const CurvePoint first = pointAt(points, 0);
    const CurvePoint second = pointAt(points, 1);
    const CurvePoint beforeLast = pointAt(points, count - 2);
    const CurvePoint last = pointAt(points, count - 1);
    const double span = spanStep(last.x - first.x);
    const double g1 = (second.y - first.y) / spanStep(second.x - first.x);
    const double g2 = (last.y - beforeLast.y) / spanStep(last.x - beforeLast.x);
    double abc[3] = {(g2 - g1) / span * 0.5, g1, first.y};
    bool converged = false;
    for (int iteration = 0; iteration < kMostCurveIterations && !converged; ++iteration) {
        double d[3] = {};
        if (!curveCorrection(points, count, abc, d)) break;
        for (int k = 0; k < 3; ++k) abc[k] -= d[k];
        converged = std::fabs(d[0]) < kCurveConvergence && std::fabs(d[1]) < kCurveConvergence &&
                    std::fabs(d[2]) < kCurveConvergence;
    }
    if (!converged) {
        for (double* output : outputs) *output = 0.0;
        return ERR_FAILURE;
    }
    double sumSquares = 0.0;
    for (int k = 0; k < count; ++k) {
        const CurvePoint p = pointAt(points, k);
        const double r = p.y - (abc[0] * p.x * p.x + abc[1] * p.x + abc[2]);
        sumSquares += r * r;
    }
    *a = abc[0];
    *b = abc[1];
    *c = abc[2];
    *startGrade = 2.0 * abc[0] * first.x + abc[1];
    *endGrade = 2.0 * abc[0] * last.x + abc[1];
    *length = span;
    *rateOfGradeChange = 2.0 * abc[0];
    *residualMeasure = std::sqrt(sumSquares) / count;
    return 0;
}

}  // extern "C"
