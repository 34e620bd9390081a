// Vertical profile best fit: alignments recovered from sampled designs, the envelope rule, the
// trace format, the point-array form, and the single vertical curve against a dense
// reference adjustment.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "korvelbase/bestfit_vertical.h"
#include "korvelbase/mem.h"

namespace {

struct DesignIp {
    double station;
    double level;
    double length;
};

// Level of a design of grades and symmetric parabolic curves (the test's own evaluation).
double designLevel(const std::vector<DesignIp>& ips, double x) {
    for (std::size_t k = 1; k + 1 < ips.size(); ++k) {
        const DesignIp& ip = ips[k];
        if (ip.length > 0 && std::fabs(x - ip.station) <= ip.length / 2) {
            const double g1 = (ip.level - ips[k - 1].level) / (ip.station - ips[k - 1].station);
            const double g2 = (ips[k + 1].level - ip.level) / (ips[k + 1].station - ip.station);
            const double t = x - (ip.station - ip.length / 2);
            return ip.level - g1 * ip.length / 2 + g1 * t + (g2 - g1) * t * t / (2 * ip.length);
        }
    }
    for (std::size_t k = 1; k < ips.size(); ++k) {
        if (x <= ips[k].station) {
            const DesignIp& a = ips[k - 1];
            const DesignIp& b = ips[k];
            return a.level + (b.level - a.level) * (x - a.station) / (b.station - a.station);
        }
    }
    return ips.back().level;
}

struct Fit {
    std::vector<DesignIp> ips;
    int status = 0;
};

Fit runFit(const std::vector<double>& stations, const std::vector<double>& levels) {
    double* s = nullptr;
    double* l = nullptr;
    double* v = nullptr;
    int m = -1;
    Fit fit;
    fit.status = qmBestFit_verticalComputeProfile(&s, &l, &v, &m, stations.data(), levels.data(),
                                                  static_cast<int>(stations.size()));
    for (int i = 0; i < m; ++i) fit.ips.push_back({s[i], l[i], v[i]});
    if (s != nullptr) qmMem_free(s);
    if (l != nullptr) qmMem_free(l);
    if (v != nullptr) qmMem_free(v);
    return fit;
}

void sample(const std::vector<DesignIp>& design, double step, double noise, unsigned seed,
            std::vector<double>& stations, std::vector<double>& levels) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> jitter(-noise, noise);
    stations.clear();
    levels.clear();
    for (double x = design.front().station; x <= design.back().station + 1e-9; x += step) {
        stations.push_back(x);
        levels.push_back(designLevel(design, x) + (noise > 0 ? jitter(random) : 0.0));
    }
}

constexpr double kTolerance = 0.05;

TEST(VerticalFit, CollinearDataGivesTheTwoEndIps) {
    qmBestFit_verticalProfileInitialize(kTolerance, kTolerance, 20, 20, 30, 1.0, 0, 0, 0);
    std::vector<double> stations;
    std::vector<double> levels;
    sample({{0, 100, 0}, {800, 116, 0}}, 10.0, 0.01, 5, stations, levels);
    const Fit fit = runFit(stations, levels);
    ASSERT_EQ(fit.status, 0);
    ASSERT_EQ(fit.ips.size(), 2u);
    EXPECT_EQ(fit.ips[0].station, 0.0);
    EXPECT_EQ(fit.ips[1].station, stations.back());
    EXPECT_EQ(fit.ips[0].length, 0.0);
    EXPECT_EQ(fit.ips[1].length, 0.0);
    // The end IPs sit at the envelope middles, which are the data levels.
    EXPECT_DOUBLE_EQ(fit.ips[0].level, levels.front());
    EXPECT_DOUBLE_EQ(fit.ips[1].level, levels.back());
}

TEST(VerticalFit, RecoversTwoAndThreeGradeDesigns) {
    // Designs with sharp grade breaks, sampled at 1 m; short curves (K = 2) round the breaks.
    const double k = 2.0;
    const std::vector<std::vector<DesignIp>> designs = {
        {{0, 100, 0}, {500, 115, 0}, {1000, 110, 0}},               // +3%, -1%
        {{0, 50, 0}, {400, 58, 0}, {900, 48, 0}, {1400, 60, 0}},    // +2%, -2%, +2.4%
    };
    for (const auto& design : designs) {
        SCOPED_TRACE(design.size());
        qmBestFit_verticalProfileInitialize(kTolerance, kTolerance, k, k, 0.0, 1.0, 0, 0, 0);
        std::vector<double> stations;
        std::vector<double> levels;
        sample(design, 1.0, 0.0, 1, stations, levels);
        const Fit fit = runFit(stations, levels);
        ASSERT_EQ(fit.status, 0);
        ASSERT_EQ(fit.ips.size(), design.size());
        for (std::size_t i = 0; i < design.size(); ++i) {
            EXPECT_NEAR(fit.ips[i].station, design[i].station, 3.0) << i;
            EXPECT_NEAR(fit.ips[i].level, design[i].level, 0.1) << i;
        }
        // The finished alignment, curves included, stays inside the envelope (the curves'
        // mid-ordinates, under a centimetre here, are the only departure from the data).
        for (std::size_t j = 0; j < stations.size(); ++j) {
            EXPECT_NEAR(designLevel(fit.ips, stations[j]), levels[j], kTolerance + 0.01) << stations[j];
        }
    }
}

TEST(VerticalFit, FilteringLeavesTheProfileInsideTheEnvelope) {
    // Each filtering pass rescans until no point is outside, so with straight grades (K = 0)
    // the piecewise-linear result lies inside the envelope at every data point.
    qmBestFit_verticalProfileInitialize(kTolerance, kTolerance, 0.0, 0.0, 0.0, 0.5, 0, 0, 0);
    std::vector<double> stations;
    std::vector<double> levels;
    sample({{0, 100, 0}, {450, 109, 160}, {1050, 97, 240}, {1600, 108, 200}, {2000, 104, 0}}, 1.0,
           0.02, 9, stations, levels);
    const Fit fit = runFit(stations, levels);
    ASSERT_EQ(fit.status, 0);
    ASSERT_GE(fit.ips.size(), 4u);
    for (std::size_t i = 1; i < fit.ips.size(); ++i) {
        EXPECT_GT(fit.ips[i].station, fit.ips[i - 1].station);
    }
    for (std::size_t j = 0; j < stations.size(); ++j) {
        const double z = designLevel(fit.ips, stations[j]);
        EXPECT_LE(z, levels[j] + kTolerance + 1e-9) << stations[j];
        EXPECT_GE(z, levels[j] - kTolerance - 1e-9) << stations[j];
    }
}

TEST(VerticalFit, FailuresAndMissingValues) {
    qmBestFit_verticalProfileInitialize(kTolerance, kTolerance, 10, 10, 0, 1.0, 0, 0, 0);
    // Fewer than 2 points, decreasing stations, every level missing: null outputs.
    EXPECT_EQ(runFit({5.0}, {1.0}).status, ERR_FAILURE);
    EXPECT_EQ(runFit({5.0, 4.0, 6.0}, {1.0, 1.0, 1.0}).status, ERR_FAILURE);
    EXPECT_EQ(runFit({0.0, 1.0, 2.0}, {-999.0, -999.0, -999.0}).status, ERR_FAILURE);
    double* s = reinterpret_cast<double*>(0x1);
    EXPECT_EQ(qmBestFit_verticalComputeProfile(&s, nullptr, nullptr, nullptr, nullptr, nullptr, 3),
              ERR_FAILURE);
    // Missing levels at the ends move the limits inward.
    const Fit fit = runFit({0, 10, 20, 30, 40}, {-999, 5, 6, 7, -999});
    ASSERT_EQ(fit.status, 0);
    ASSERT_EQ(fit.ips.size(), 2u);
    EXPECT_EQ(fit.ips[0].station, 10.0);
    EXPECT_EQ(fit.ips[1].station, 30.0);
}

TEST(VerticalFit, TiesPutTheSecondIpOnTheFirstDataLine) {
    qmBestFit_verticalProfileInitialize(kTolerance, kTolerance, 30, 30, 0, 1.0, 1, 1, 0);
    std::vector<double> stations;
    std::vector<double> levels;
    sample({{0, 100, 0}, {300, 106, 120}, {700, 98, 160}, {1000, 104, 0}}, 2.0, 0.01, 3, stations,
           levels);
    const Fit fit = runFit(stations, levels);
    ASSERT_EQ(fit.status, 0);
    ASSERT_GE(fit.ips.size(), 4u);
    const auto onLine = [](double x, double x1, double y1, double x2, double y2) {
        return y1 + (x - x1) * (y2 - y1) / (x2 - x1);
    };
    const std::size_t m = fit.ips.size();
    const std::size_t n = stations.size();
    EXPECT_NEAR(fit.ips[1].level, onLine(fit.ips[1].station, stations[0], levels[0], stations[1], levels[1]), 1e-9);
    EXPECT_NEAR(fit.ips[m - 2].level,
                onLine(fit.ips[m - 2].station, stations[n - 2], levels[n - 2], stations[n - 1], levels[n - 1]),
                1e-9);
}

TEST(VerticalFit, CurveLengthsAreRoundedAndDoNotOverlap) {
    qmBestFit_verticalProfileInitialize(kTolerance, kTolerance, 200, 200, 10, 0.5, 0, 0, 0);
    std::vector<double> stations;
    std::vector<double> levels;
    sample({{0, 100, 0}, {200, 108, 0}, {350, 100, 0}, {600, 110, 0}}, 1.0, 0.0, 1, stations, levels);
    const Fit fit = runFit(stations, levels);
    ASSERT_EQ(fit.status, 0);
    for (std::size_t i = 1; i + 1 < fit.ips.size(); ++i) {
        const double v = fit.ips[i].length;
        EXPECT_NEAR(v * 1000.0, std::round(v * 1000.0), 1e-6) << i;  // three decimals
        EXPECT_LE(v, 2 * (fit.ips[i].station - fit.ips[i - 1].station) + 1e-3) << i;
        EXPECT_LE(v, fit.ips[i + 1].station - fit.ips[i].station + 1e-3) << i;
    }
}

#if defined(_WIN32)
constexpr const char* kTracePath = "C:\\BestFit_Vertical_Debug.txt";
#else
constexpr const char* kTracePath = "/tmp/BestFit_Vertical_Debug.txt";
#endif

TEST(VerticalFit, TraceFollowsItsFormat) {
    std::remove(kTracePath);
    qmBestFit_verticalProfileInitialize(0.02, 0.03, 10, 12, 5, 0.1, 0, 0, 1);
    const Fit fit = runFit({0, 10, 20, 30, 40}, {1.0, 1.5, 3.0, 1.0, 1.2});
    ASSERT_EQ(fit.status, 0);
    qmBestFit_verticalProfileInitialize(0.02, 0.03, 10, 12, 5, 0.1, 0, 0, 0);
    std::ifstream in(kTracePath);
    ASSERT_TRUE(in.good());
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    ASSERT_GT(lines.size(), 12u);
    EXPECT_EQ(lines[0], "UPTol(minOffset): 0.020 LOTol(minOffset): 0.030 ");
    EXPECT_EQ(lines[1], "Hog  (maxRadius): 10.000 Sag (maxRad/2.0): 12.000 ");
    EXPECT_EQ(lines[2], "VCMinimumLength (maxOffset): 5.000 ");
    EXPECT_EQ(lines[3], "COG Filter Val (PCPTRadius): 0.100 ");
    EXPECT_EQ(lines[4], "The LongLen = 40.000 : ");
    EXPECT_EQ(lines[5], "The Envelopes : ");
    EXPECT_EQ(lines[6], "1\tSta: 0.00000\tUpper: 1.02000\tLower: 0.97000");
    EXPECT_EQ(lines[11], "Kestrum - Part 1. Find the Limits of the controls ");
    EXPECT_EQ(lines[12], "Base Gradient Established");
    EXPECT_EQ(lines[13], "\t\tIP Number: 1\tChainage: 0.0000\tLevel: 0.9950\tVCLength: 0.0000\tVCKVal: 0.0000");
    bool sawFinal = false;
    for (const std::string& line : lines) sawFinal = sawFinal || line == "FINAL RESULTS :";
    EXPECT_TRUE(sawFinal);
    EXPECT_EQ(lines.back().rfind("\t\tIP Number: ", 0), 0u);
}

TEST(VerticalFit, PointArrayFormInBothStationModes) {
    std::vector<Point3d> points;
    for (int i = 0; i <= 100; ++i) {
        const double x = 1000.0 + i * 3.0;
        const double y = 50.0 + (i < 50 ? 0.03 * i * 3.0 : 4.5 - 0.01 * (i - 50) * 3.0);
        points.push_back({x, y, y});
    }
    Point3d* out = nullptr;
    int count = 0;
    ASSERT_EQ(qmPoint_verticalComputeProfile(&out, &count, points.data(), int(points.size()), 0,
                                             kTolerance, kTolerance, 0, 0, 0, 0.0, 0, 0, 0),
              0);
    ASSERT_GE(count, 3);
    EXPECT_EQ(out[0].x, 1000.0);  // stations shifted back by the first x
    EXPECT_EQ(out[count - 1].x, 1300.0);
    qmMem_free(out);
    // Distance mode: stations are plan distances along the points (here 3 per step), levels z.
    for (Point3d& p : points) p.y = 0.0;
    ASSERT_EQ(qmPoint_verticalComputeProfile(&out, &count, points.data(), int(points.size()), 1,
                                             kTolerance, kTolerance, 0, 0, 0, 0.0, 0, 0, 0),
              0);
    EXPECT_EQ(out[0].x, 0.0);
    EXPECT_DOUBLE_EQ(out[count - 1].x, 300.0);
    qmMem_free(out);
    EXPECT_EQ(qmPoint_verticalComputeProfile(&out, &count, points.data(), 1, 1, 0, 0, 0, 0, 0, 0, 0,
                                             0, 0),
              ERR_FAILURE);
}

// ---- single vertical curve ----------------------------------------------------------------

// The combined adjustment written densely: M = K Q K^T as a full n x n matrix inverted by
// Gauss-Jordan, N = D^T M^-1 D, u = D^T M^-1 w.  The library exploits M being diagonal.
bool denseCurveFit(const std::vector<double>& pts, double abc[3]) {
    const std::size_t n = pts.size() / 4;
    const double x0 = pts[0], y0 = pts[2], x1 = pts[4], y1 = pts[6];
    const double xl = pts[4 * (n - 1)], yl = pts[4 * (n - 1) + 2];
    const double xp = pts[4 * (n - 2)], yp = pts[4 * (n - 2) + 2];
    const double g1 = (y1 - y0) / (x1 - x0), g2 = (yl - yp) / (xl - xp);
    abc[0] = (g2 - g1) / (xl - x0) * 0.5;
    abc[1] = g1;
    abc[2] = y0;
    for (int iteration = 0; iteration < 15; ++iteration) {
        std::vector<double> m(n * n, 0.0);  // K Q K^T with K n x 2n, Q 2n x 2n diagonal
        for (std::size_t i = 0; i < n; ++i) {
            const double slope = 2 * abc[0] * pts[4 * i] + abc[1];
            for (std::size_t j = 0; j < n; ++j) {
                double sum = 0;
                if (i == j) sum = slope * slope * pts[4 * i + 1] * pts[4 * i + 1] + pts[4 * i + 3] * pts[4 * i + 3];
                m[i * n + j] = sum;
            }
        }
        // Invert m densely (Gauss-Jordan with partial pivoting).
        std::vector<double> inv(n * n, 0.0);
        for (std::size_t i = 0; i < n; ++i) inv[i * n + i] = 1.0;
        for (std::size_t c = 0; c < n; ++c) {
            std::size_t pivot = c;
            for (std::size_t r = c + 1; r < n; ++r) {
                if (std::fabs(m[r * n + c]) > std::fabs(m[pivot * n + c])) pivot = r;
            }
            for (std::size_t k = 0; k < n; ++k) {
                std::swap(m[c * n + k], m[pivot * n + k]);
                std::swap(inv[c * n + k], inv[pivot * n + k]);
            }
            const double d = m[c * n + c];
            for (std::size_t k = 0; k < n; ++k) {
                m[c * n + k] /= d;
                inv[c * n + k] /= d;
            }
            for (std::size_t r = 0; r < n; ++r) {
                if (r == c) continue;
                const double f = m[r * n + c];
                for (std::size_t k = 0; k < n; ++k) {
                    m[r * n + k] -= f * m[c * n + k];
                    inv[r * n + k] -= f * inv[c * n + k];
                }
            }
        }
        double nn[3][3] = {}, u[3] = {};
        for (std::size_t i = 0; i < n; ++i) {
            const double xi = pts[4 * i];
            const double di[3] = {xi * xi, xi, 1.0};
            for (std::size_t j = 0; j < n; ++j) {
                const double xj = pts[4 * j];
                const double dj[3] = {xj * xj, xj, 1.0};
                const double wj = abc[0] * xj * xj + abc[1] * xj + abc[2] - pts[4 * j + 2];
                for (int r = 0; r < 3; ++r) {
                    u[r] += di[r] * inv[i * n + j] * wj;
                    for (int c = 0; c < 3; ++c) nn[r][c] += di[r] * inv[i * n + j] * dj[c];
                }
            }
        }
        // Solve the 3x3 system by elimination.
        double a[3][4];
        for (int r = 0; r < 3; ++r) {
            for (int c = 0; c < 3; ++c) a[r][c] = nn[r][c];
            a[r][3] = u[r];
        }
        for (int c = 0; c < 3; ++c) {
            for (int r = c + 1; r < 3; ++r) {
                const double f = a[r][c] / a[c][c];
                for (int k = c; k < 4; ++k) a[r][k] -= f * a[c][k];
            }
        }
        double d[3];
        for (int r = 2; r >= 0; --r) {
            double s = a[r][3];
            for (int k = r + 1; k < 3; ++k) s -= a[r][k] * d[k];
            d[r] = s / a[r][r];
        }
        for (int k = 0; k < 3; ++k) abc[k] -= d[k];
        if (std::fabs(d[0]) < 0.01 && std::fabs(d[1]) < 0.01 && std::fabs(d[2]) < 0.01) return true;
    }
    return false;
}

TEST(VerticalCurveFit, RecoversTheParabolaAndAgreesWithTheDenseAdjustment) {
    std::mt19937 random(17);
    std::normal_distribution<double> noise(0.0, 0.01);
    for (const double a : {-2e-4, 5e-5, 3e-4}) {
        const double b = 0.02, c = 100.0;
        std::vector<double> pts;
        for (int i = 0; i <= 40; ++i) {
            const double x = i * 5.0;
            pts.insert(pts.end(), {x, 0.002, a * x * x + b * x + c + noise(random), 0.01});
        }
        double out[8];
        ASSERT_EQ(qmBestFit_vertCurveCalc(&out[0], &out[1], &out[2], &out[3], &out[4], &out[5],
                                          &out[6], &out[7], 41, pts.data()),
                  0);
        EXPECT_NEAR(out[0], a, 2e-6);
        EXPECT_NEAR(out[1], b, 5e-4);
        EXPECT_NEAR(out[2], c, 0.02);
        EXPECT_DOUBLE_EQ(out[3], 2 * out[0] * 0 + out[1]);
        EXPECT_DOUBLE_EQ(out[4], 2 * out[0] * 200 + out[1]);
        EXPECT_EQ(out[5], 200.0);
        EXPECT_DOUBLE_EQ(out[6], 2 * out[0]);
        EXPECT_LT(out[7], 0.01);
        double dense[3];
        ASSERT_TRUE(denseCurveFit(pts, dense));
        for (int k = 0; k < 3; ++k) EXPECT_NEAR(out[k], dense[k], 1e-10 * (1 + std::fabs(dense[k]))) << k;
    }
}

TEST(VerticalCurveFit, DeliberateResultsAndFailures) {
    double out[8];
    const double two[8] = {0, 1, 0, 1, 1, 1, 1, 1};
    EXPECT_EQ(qmBestFit_vertCurveCalc(&out[0], &out[1], &out[2], &out[3], &out[4], &out[5], &out[6],
                                      &out[7], 2, two),
              1);
    // No weight anywhere: the adjustment cannot proceed; every output is zeroed.
    const double weightless[12] = {0, 0, 1, 0, 1, 0, 2, 0, 2, 0, 3, 0};
    for (double& o : out) o = 7.0;
    EXPECT_EQ(qmBestFit_vertCurveCalc(&out[0], &out[1], &out[2], &out[3], &out[4], &out[5], &out[6],
                                      &out[7], 3, weightless),
              ERR_FAILURE);
    for (const double o : out) EXPECT_EQ(o, 0.0);
    EXPECT_EQ(qmBestFit_vertCurveCalc(nullptr, &out[1], &out[2], &out[3], &out[4], &out[5],
                                      &out[6], &out[7], 3, weightless),
              ERR_FAILURE);
}

}  // namespace

namespace {

// The staged fit written the plain way: a scan of the whole IP table for every evaluation and
// a full recomputation after every change.  The library's indexed version must give the same
// numbers, bit for bit.
struct NaiveFit {
    struct Ip {
        double s, l, v;
        int keep;
        double gIn = 0, gOut = 0, bvc = 0, evc = 0, bvcL = 0, evcL = 0;
    };
    double up, lo, hog, sag, vmin, cog;
    std::vector<double> st, lv, upper, lower;
    std::vector<Ip> ips;

    static double step(double d) { return std::fabs(d) < 0.0001 ? 0.0001 : d; }
    static bool missing(double v) { return v < -998.0; }

    void recompute() {
        const std::size_t m = ips.size();
        for (std::size_t i = 0; i < m; ++i) {
            Ip& ip = ips[i];
            ip.gIn = i > 0 ? (ip.l - ips[i - 1].l) / step(ip.s - ips[i - 1].s) : 0.0;
            ip.gOut = i + 1 < m ? (ips[i + 1].l - ip.l) / step(ips[i + 1].s - ip.s) : 0.0;
            if (i == 0 || i + 1 == m) {
                ip.bvc = ip.evc = ip.s;
                ip.bvcL = ip.evcL = ip.l;
                continue;
            }
            if (ip.keep == 1) {
                if (ip.v < 0) ip.v = 0;
            } else {
                const double a = (ip.gOut - ip.gIn) * 100.0;
                ip.v = std::fabs(a) * (a > 0 ? sag : hog);
                if (ip.v < vmin) ip.v = vmin;
            }
            ip.bvc = ip.s - ip.v / 2;
            ip.evc = ip.s + ip.v / 2;
            ip.bvcL = ip.l - ip.gIn * (ip.v / 2);
            ip.evcL = ip.l + ip.gOut * (ip.v / 2);
        }
    }
    double eval(double x) const {
        const std::size_t m = ips.size();
        for (std::size_t i = 0; i < m; ++i) {
            const Ip& ip = ips[i];
            if (ip.bvc <= x && x <= ip.evc) {
                const double len = i == 0 || i + 1 == m || ip.v == 0.0 ? 0.0001 : ip.v;
                const double dx = x - ip.bvc;
                return ip.bvcL + ip.gIn * dx - (ip.gIn - ip.gOut) * dx * dx / 2.0 / len;
            }
            if (i + 1 < m && ip.evc <= x && x <= ips[i + 1].bvc) return ip.l + ip.gOut * (x - ip.s);
        }
        return 0.0;
    }
    void add(double s, double l, int keep) {
        for (Ip& ip : ips) {
            if (std::fabs(ip.s - s) <= 0.001) {
                ip = Ip{s, l, 0.0, keep};
                recompute();
                return;
            }
        }
        std::size_t at = ips.size();
        if (ips.size() >= 2) {
            at = 0;
            while (at < ips.size() && ips[at].s < s) ++at;
        }
        ips.insert(ips.begin() + static_cast<long>(at), Ip{s, l, 0.0, keep});
        recompute();
    }
    bool middle(std::size_t k, double& v) const {
        const bool nu = missing(upper[k]), nl = missing(lower[k]);
        if (nu && nl) return false;
        v = nu ? lower[k] : (nl ? upper[k] : (upper[k] + lower[k]) / 2.0);
        return true;
    }
    std::size_t first = 0, last = 0;
    int scan() {
        int added = 0;
        for (std::size_t k = first; k <= last; ++k) {
            if (missing(upper[k]) || missing(lower[k]) || upper[k] < lower[k]) continue;
            const double z = eval(st[k]);
            if (z > upper[k] || z < lower[k]) {
                double v = 0;
                middle(k, v);
                add(st[k], v, 1);
                ++added;
            }
        }
        return added;
    }
    std::vector<DesignIp> run() {
        for (std::size_t k = 0; k < st.size(); ++k) {
            upper.push_back(lv[k] + up);
            lower.push_back(lv[k] - lo);
        }
        double v = 0;
        while (first < st.size() && !middle(first, v)) ++first;
        last = st.size() - 1;
        while (!middle(last, v)) --last;
        middle(first, v);
        add(st[first], v, 0);
        middle(last, v);
        add(st[last], v, 0);
        scan();
        double f = cog;
        for (int pass = 0; pass < 10000; ++pass) {
            std::vector<Ip> kept{ips.front()};
            for (std::size_t i = 1; i + 1 < ips.size(); ++i) {
                if (std::fabs(ips[i].gIn - ips[i].gOut) * 100.0 > f) kept.push_back(ips[i]);
            }
            kept.push_back(ips.back());
            const bool removed = kept.size() < ips.size();
            ips = kept;
            recompute();
            if (!removed) break;
            for (std::size_t r = 0; r <= st.size() + 1 && scan() > 0; ++r) {
            }
            f -= 0.1;
            if (!(f > 0.1)) break;
        }
        for (Ip& ip : ips) ip.keep = 0;
        recompute();
        const std::size_t m = ips.size();
        ips.front().v = ips.back().v = 0;
        for (std::size_t i = 1; i + 1 < m; ++i) {
            const double b = ips[i].s - ips[i - 1].s, a = ips[i + 1].s - ips[i].s;
            if (ips[i - 1].v / 2 + ips[i].v / 2 > b) ips[i].v = i == 1 ? 2 * b : b;
            if (ips[i + 1].v / 2 + ips[i].v / 2 > a && ips[i].v > a) ips[i].v = a;
        }
        for (Ip& ip : ips) {
            ip.keep = 1;
            char text[64];
            std::snprintf(text, sizeof text, "%.3f", ip.v);
            ip.v = std::strtod(text, nullptr);
        }
        recompute();
        std::vector<double> e(m, 0.0);
        for (std::size_t i = 1; i + 1 < m; ++i) e[i] = ips[i].l - eval(ips[i].s);
        for (std::size_t i = 1; i + 1 < m; ++i) ips[i].l += e[i];
        std::vector<DesignIp> out;
        for (const Ip& ip : ips) out.push_back({ip.s, ip.l, ip.v});
        return out;
    }
};

}  // namespace

TEST(VerticalFit, IndexedFitAgreesWithThePlainOneBitForBit) {
    std::mt19937 random(23);
    std::uniform_real_distribution<double> noise(-0.03, 0.03);
    const double ks[][2] = {{0, 0}, {10, 15}, {60, 30}};
    for (int trial = 0; trial < 8; ++trial) {
        std::vector<double> stations;
        std::vector<double> levels;
        // The last two trials are short with a filter value far above every grade change, so
        // that the passes that would repeat themselves are stepped over.
        const int last = trial >= 6 ? 300 : 1500;
        for (int i = 0; i <= last; ++i) {
            const double x = i * (trial % 2 == 0 ? 1.0 : 0.7);
            stations.push_back(x);
            levels.push_back(100 + 4 * std::sin(x / 90.0) + 0.004 * x + noise(random));
        }
        if (trial == 3) levels[40] = levels[41] = -999.0;  // missing values inside
        const double* k = ks[trial % 3];
        const double cog = trial >= 6 ? 25.0 + trial : 0.3 + 0.4 * (trial % 3);
        qmBestFit_verticalProfileInitialize(0.05, 0.04, k[0], k[1], 5.0 * (trial % 2), cog, 0, 0, 0);
        const Fit fit = runFit(stations, levels);
        NaiveFit naive{0.05, 0.04, k[0], k[1], 5.0 * (trial % 2), cog, stations, levels, {}, {}, {}};
        const std::vector<DesignIp> expected = naive.run();
        ASSERT_EQ(fit.status, 0);
        ASSERT_EQ(fit.ips.size(), expected.size()) << trial;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            ASSERT_EQ(fit.ips[i].station, expected[i].station) << trial << " " << i;
            ASSERT_EQ(fit.ips[i].level, expected[i].level) << trial << " " << i;
            ASSERT_EQ(fit.ips[i].length, expected[i].length) << trial << " " << i;
        }
    }
}
