// Internal: angular sectors, shared by the geometry kernel (UTMAT_ sector members) and the
// plane-mathematics family (qmMath_ sector members and the range of a circular arc).
//
// A sector is the closed set of directions swept from a start direction through a sweep.
// Callers give any start and a signed sweep (negative = clockwise); the canonical form used
// here has its start in [0, 2*pi) and a counter-clockwise sweep in [0, 2*pi], 2*pi being the
// full turn.  Every comparison of two directions is absolute and inclusive at a tolerance tol
// (radians, used by magnitude), so sectors that touch within tol share their common edge.
//
// The relation of a second sector B to a first sector A is one of six cases (the codes are the
// public QMMATH_SECTORS_* values):
//   1 disjoint                 no common direction
//   2 A contains B             B lies inside A (equal sectors are case 2; a full A as well)
//   3 B contains A             A lies inside B, strictly larger
//   4 A then B                 B starts inside A and ends beyond A's end: one overlap at A's end
//   5 B then A                 B starts outside A and ends inside A: one overlap at A's start
//   6 overlap at both ends     B starts inside A, runs out past A's end, round the circle and
//                              back in through A's start: two overlaps (needs sweeps summing
//                              to at least a full turn)
// Both families build the intersection (product) and the union (sum) from this one
// classification, so they agree exactly.
#ifndef KORVELBASE_GEOMETRY_SECTORS_HPP
#define KORVELBASE_GEOMETRY_SECTORS_HPP

namespace kb::sectors {

struct Sector {
    double start;  // [0, 2*pi)
    double sweep;  // [0, 2*pi], counter-clockwise
};

// Relation codes of the classification (equal to the public QMMATH_SECTORS_* values).
enum Relation : int {
    kDisjoint = 1,
    kFirstContainsSecond = 2,
    kSecondContainsFirst = 3,
    kFirstThenSecond = 4,
    kSecondThenFirst = 5,
    kOverlapAtBothEnds = 6,
};

// At most two sectors result from a product or a sum.
constexpr int kMaxResultSectors = 2;

struct SectorPair {
    int count = 0;
    Sector items[kMaxResultSectors] = {{0.0, 0.0}, {0.0, 0.0}};
};

// A usable tolerance: finite, taken by magnitude.  False for NaN or infinity.
bool toleranceUsable(double tol) noexcept;

// A direction brought into [0, 2*pi): normalised, and a value that rounds up to a full turn
// (a tiny negative angle) taken as 0.
double canonicalDirection(double angle) noexcept;

// The canonical form of the sector (start, signed sweep): a negative sweep is turned into the
// counter-clockwise sector that ends at the given start; a sweep within tol of a full turn or
// beyond becomes exactly 2*pi.  False, out untouched, when start or sweep is not finite.
bool makeSector(double start, double sweep, double tol, Sector& out) noexcept;

// Position of a direction against a canonical sector: -1 strictly inside, 0 on one of its two
// bounding directions (within tol), 1 outside.  A full turn has no boundary: always -1.
int compareDirection(double direction, const Sector& sector, double tol) noexcept;

// True when the direction lies inside the sector or on its boundary (within tol).
inline bool containsDirection(double direction, const Sector& sector, double tol) noexcept {
    return compareDirection(direction, sector, tol) <= 0;
}

// The relation (1 to 6) of canonical sector b to canonical sector a.
int classify(const Sector& a, const Sector& b, double tol) noexcept;

// The common part of two canonical sectors: none (disjoint), one sector, or two (case 6, the
// one at a's start first).  relation, when not null, receives the classification.
SectorPair product(const Sector& a, const Sector& b, double tol, int* relation) noexcept;

// The union of two canonical sectors: two sectors (a then b) when disjoint, otherwise one
// (the full turn, starting at a's start, in case 6).  relation as above.
SectorPair sum(const Sector& a, const Sector& b, double tol, int* relation) noexcept;

// product or sum, as the exported members take them.
using Operation = SectorPair (*)(const Sector&, const Sector&, double, int*) noexcept;

// Both sectors of an exported call in canonical form; false for a non-finite value or
// tolerance.
bool makeTwoSectors(double start1, double sweep1, double start2, double sweep2, double tol,
                    Sector& a, Sector& b) noexcept;

// Writes a result into the caller's arrays of capacity kMaxResultSectors and its count.
void storePair(const SectorPair& pair, double* starts, double* sweeps, int* count) noexcept;

}  // namespace kb::sectors

#endif  // KORVELBASE_GEOMETRY_SECTORS_HPP
