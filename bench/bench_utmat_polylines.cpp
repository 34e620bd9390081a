// Polyline intersections at scale.
//
//   - The walk by reference abscissae on two long profiles that cross about every other
//     segment (a shared random walk with independent noise on each, the second profile's x grid
//     offset by half a step), against a bare merge walk over the same segments written here
//     (plain parametric intersection, no tolerance, no duplicate test) and, when GEOS is
//     installed, against GEOSIntersection of the same two line strings.
//   - Polyline with polyline (through the grid of segment boxes) on two plane random walks.
//   - A segment across a long profile.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "korvelbase/utmat_polylines.h"

#ifdef KB_BENCH_WITH_GEOS
#include <geos_c.h>
#endif

namespace {

constexpr double kTolerance = 1e-6;
// Noise on each profile against the step of the shared walk: tuned so that two 1,000,000-vertex
// profiles cross about 530,000 times.
constexpr double kSharedStep = 0.3;
constexpr double kNoise = 0.9;

struct Profiles {
    std::vector<Point2d> one, two;
    std::vector<double> abscissae1, abscissae2;
};

// Profile 1 at x = 0, 1, 2, ...; profile 2 at x = 0.5, 1.5, ...; both follow one random walk
// with their own noise.
Profiles makeProfiles(int n, unsigned seed) {
    std::mt19937_64 engine(seed);
    std::normal_distribution<double> normal(0.0, 1.0);
    Profiles p;
    p.one.reserve(n);
    p.two.reserve(n);
    double level = 0.0;
    for (int i = 0; i < n; ++i) {
        const double next = level + kSharedStep * normal(engine);
        p.one.push_back({static_cast<double>(i), level + kNoise * normal(engine)});
        p.two.push_back({i + 0.5, 0.5 * (level + next) + kNoise * normal(engine)});
        p.abscissae1.push_back(p.one.back().x);
        p.abscissae2.push_back(p.two.back().x);
        level = next;
    }
    return p;
}

const Profiles& profiles(int n) {
    static Profiles small = makeProfiles(100000, 7);
    static Profiles large = makeProfiles(1000000, 7);
    return n == 100000 ? small : large;
}

struct Results {
    std::vector<Point2d> points;
    std::vector<double> on1, on2;
    std::vector<Point2d> overlapPoints;
    std::vector<double> overlapOn1, overlapOn2;
    explicit Results(std::size_t capacity)
        : points(capacity), on1(capacity), on2(capacity), overlapPoints(2 * capacity), overlapOn1(2 * capacity),
          overlapOn2(2 * capacity) {}
};

void BM_AbscissaWalkOnProfiles(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    Profiles p = profiles(n);
    const int capacity = 2 * n;
    Results out(static_cast<std::size_t>(capacity));
    UtDonneesIntersection request{p.one.data(), n, p.two.data(), n, kTolerance, capacity,
                                  p.abscissae1.data(), p.abscissae2.data()};
    int pointFound = 0, pointCount = 0, overlapFound = 0, overlapCount = 0;
    for (auto _ : state) {
        UTMAT_CalculerIntersectionPolylignePolyligneAvecAbscisses(
            &request, &pointFound, &pointCount, out.points.data(), out.on1.data(), out.on2.data(), &overlapFound,
            &overlapCount, out.overlapPoints.data(), out.overlapOn1.data(), out.overlapOn2.data());
        benchmark::DoNotOptimize(pointCount);
    }
    state.counters["crossings"] = pointCount;
    state.SetItemsProcessed(state.iterations() * 2 * static_cast<int64_t>(n));
}
BENCHMARK(BM_AbscissaWalkOnProfiles)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

double planLength(const Point2d& a, const Point2d& b) {
    return std::sqrt((b.x - a.x) * (b.x - a.x) + (b.y - a.y) * (b.y - a.y));
}

// The least a merge walk over the same segments can do: the same interval merge, a parametric
// intersection of each pair (no tolerance, no collinear pieces, no duplicate test), the
// crossing point and its curvilinear abscissae on both profiles.
int bareMergeWalk(const Profiles& p, Results& out) {
    const int n1 = static_cast<int>(p.one.size());
    const int n2 = static_cast<int>(p.two.size());
    int i = 0, k = 0, count = 0;
    double along1 = 0.0, along2 = 0.0;
    double length1 = planLength(p.one[0], p.one[1]);
    double length2 = planLength(p.two[0], p.two[1]);
    const auto advance1 = [&] {
        along1 += length1;
        if (++i + 1 < n1) length1 = planLength(p.one[i], p.one[i + 1]);
    };
    const auto advance2 = [&] {
        along2 += length2;
        if (++k + 1 < n2) length2 = planLength(p.two[k], p.two[k + 1]);
    };
    while (i + 1 < n1 && k + 1 < n2) {
        while (i + 1 < n1 && p.abscissae1[i + 1] < p.abscissae2[k]) advance1();
        if (i + 1 >= n1) break;
        while (k + 1 < n2 && p.abscissae2[k + 1] < p.abscissae1[i]) advance2();
        if (k + 1 >= n2) break;
        const Point2d a = p.one[i], b = p.two[k];
        const double ux = p.one[i + 1].x - a.x, uy = p.one[i + 1].y - a.y;
        const double vx = p.two[k + 1].x - b.x, vy = p.two[k + 1].y - b.y;
        const double wx = b.x - a.x, wy = b.y - a.y;
        const double det = ux * vy - uy * vx;
        if (det != 0.0) {
            const double s = (wx * vy - wy * vx) / det;
            const double t = (wx * uy - wy * ux) / det;
            if (s >= 0.0 && s <= 1.0 && t >= 0.0 && t <= 1.0) {
                out.points[count] = {a.x + s * ux, a.y + s * uy};
                out.on1[count] = along1 + s * length1;
                out.on2[count] = along2 + t * length2;
                ++count;
            }
        }
        if (p.abscissae2[k + 1] < p.abscissae1[i + 1]) {
            advance2();
        } else {
            advance1();
        }
    }
    return count;
}

void BM_BareMergeWalkOnProfiles(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const Profiles& p = profiles(n);
    Results out(static_cast<std::size_t>(2 * n));
    int count = 0;
    for (auto _ : state) {
        count = bareMergeWalk(p, out);
        benchmark::DoNotOptimize(count);
        benchmark::ClobberMemory();
    }
    state.counters["crossings"] = count;
    state.SetItemsProcessed(state.iterations() * 2 * static_cast<int64_t>(n));
}
BENCHMARK(BM_BareMergeWalkOnProfiles)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

#ifdef KB_BENCH_WITH_GEOS
GEOSGeometry* lineString(GEOSContextHandle_t context, const std::vector<Point2d>& points) {
    GEOSCoordSequence* sequence =
        GEOSCoordSeq_copyFromBuffer_r(context, &points[0].x, static_cast<unsigned>(points.size()), 0, 0);
    return GEOSGeom_createLineString_r(context, sequence);
}

void BM_GeosIntersectionOfProfiles(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const Profiles& p = profiles(n);
    GEOSContextHandle_t context = GEOS_init_r();
    GEOSGeometry* one = lineString(context, p.one);
    GEOSGeometry* two = lineString(context, p.two);
    int parts = 0;
    for (auto _ : state) {
        GEOSGeometry* meeting = GEOSIntersection_r(context, one, two);
        parts = meeting != nullptr ? GEOSGetNumGeometries_r(context, meeting) : -1;
        benchmark::DoNotOptimize(parts);
        if (meeting != nullptr) GEOSGeom_destroy_r(context, meeting);
    }
    state.counters["crossings"] = parts;
    state.SetItemsProcessed(state.iterations() * 2 * static_cast<int64_t>(n));
    GEOSGeom_destroy_r(context, one);
    GEOSGeom_destroy_r(context, two);
    GEOS_finish_r(context);
}
BENCHMARK(BM_GeosIntersectionOfProfiles)->Arg(100000)->Arg(1000000)->Iterations(1)->Unit(benchmark::kMillisecond);
#endif

// Two plane random walks of n vertices each, through UTMAT_CalculerIntersectionPolylignePolyligne.
void BM_PolylineWithPolylineRandomWalks(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    std::mt19937_64 engine(11);
    std::uniform_real_distribution<double> step(-1.0, 1.0);
    std::vector<Point2d> a{{0.0, 0.0}}, b{{0.5, 0.5}};
    for (int i = 1; i < n; ++i) {
        a.push_back({a.back().x + step(engine), a.back().y + step(engine)});
        b.push_back({b.back().x + step(engine), b.back().y + step(engine)});
    }
    const int capacity = 4 * n;
    Results out(static_cast<std::size_t>(capacity));
    UtDonneesIntersection request{a.data(), n, b.data(), n, kTolerance, capacity, nullptr, nullptr};
    int pointFound = 0, pointCount = 0, overlapFound = 0, overlapCount = 0;
    for (auto _ : state) {
        UTMAT_CalculerIntersectionPolylignePolyligne(&request, &pointFound, &pointCount, out.points.data(),
                                                     out.on1.data(), out.on2.data(), &overlapFound, &overlapCount,
                                                     out.overlapPoints.data(), out.overlapOn1.data(),
                                                     out.overlapOn2.data());
        benchmark::DoNotOptimize(pointCount);
    }
    state.counters["crossings"] = pointCount;
}
BENCHMARK(BM_PolylineWithPolylineRandomWalks)->Arg(100000)->Unit(benchmark::kMillisecond);

// A segment along the length of a profile, crossing it about every other segment.
void BM_SegmentWithPolyline(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const Profiles& p = profiles(n);
    const Point2d segment[2] = {{-1.0, 0.0}, {static_cast<double>(n), 0.0}};
    // The profile with its shared walk taken out, so that it keeps crossing the segment.
    std::vector<Point2d> flat(p.one.size());
    for (std::size_t i = 0; i < flat.size(); ++i) {
        flat[i] = {p.one[i].x, p.one[i].y - (i + 1 < flat.size() ? 0.5 * (p.one[i].y + p.one[i + 1].y) : p.one[i].y)};
    }
    const int capacity = n;
    Results out(static_cast<std::size_t>(capacity));
    int pointFound = 0, pointCount = 0, overlapFound = 0, overlapCount = 0;
    for (auto _ : state) {
        UTMAT_CalculerIntersectionSegmentPolyligne(segment, flat.data(), n, kTolerance, capacity, &pointFound,
                                                   &pointCount, out.points.data(), out.on1.data(), out.on2.data(),
                                                   &overlapFound, &overlapCount, out.overlapPoints.data(),
                                                   out.overlapOn1.data(), out.overlapOn2.data());
        benchmark::DoNotOptimize(pointCount);
    }
    state.counters["crossings"] = pointCount;
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(n));
}
BENCHMARK(BM_SegmentWithPolyline)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
