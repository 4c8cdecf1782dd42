// Makes the bits of the position code and writes the two files that position_code.cpp includes. One file has the bits
// of the plane, and the other has those of the tiles (position_code.h explains both). Reports on standard error how
// long this takes and how often a square had to be emptied and filled again. The bits are frozen as pattern version 1.
// The program is kept only to show how the bits were made; it makes the same bits on every machine.
//
// A window is a part of the code with 5 x 5 to 8 x 8 squares. Two windows are too similar if they differ, in any of
// their orientations, in fewer bits than planeWindowDistance() or tileWindowDistance() requires. The squares of the
// code are filled with random bits one after the other, row by row. If a bit completes a window that is too similar to
// an earlier window, the bit is inverted. If neither value of the bit works, the last few squares are emptied and
// filled again. Every completed window of the plane is added to an index, which finds similar windows by the pigeonhole
// principle. The windows of tiles are kept in plain lists. If squares are emptied, the windows that they completed are
// removed in reverse order.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <random>
#include <vector>

#include "camera_library/pattern_code/bit_count.h"
#include "camera_library/pattern_code/position_code.h"

namespace {

using pattern_code::onesIn;
using pattern_code::planeSide;
using pattern_code::planeWindowDistance;
using pattern_code::tileCount;
using pattern_code::tileSide;
using pattern_code::tileWindowDistance;
using Word = std::uint64_t;

// Turns a window of side n by 90 degrees. A window is stored in one word: the bit in column c and row r has the number
// r * n + c.
Word turned(Word word, int n) {
    Word result = 0;
    for (int row = 0; row < n; ++row) {
        for (int column = 0; column < n; ++column) {
            result |= ((word >> ((n - 1 - column) * n + row)) & 1U) << (row * n + column);
        }
    }
    return result;
}

Word allOnes(int n) {
    return n == 8 ? ~Word{0} : (Word{1} << (n * n)) - 1;
}

// True if a window and one of its other orientations differ in fewer than `distance` bits. Only bits of the mask count.
bool isLikeItselfTurned(Word word, Word mask, int n, int distance) {
    Word turnedWord = word;
    Word turnedMask = mask;
    for (int turn = 1; turn < 4; ++turn) {
        turnedWord = turned(turnedWord, n);
        turnedMask = turned(turnedMask, n);
        if (onesIn((word ^ turnedWord) & mask & turnedMask) < distance) {
            return true;
        }
    }
    return false;
}

// An index of windows of side n. Windows are compared by all their bits, because every square of the plane carries the
// position code. Each window is stored in four orientations, each of which is one word. The words are cut into parts,
// which are the keys of the index. Two words that differ in fewer than `distance` bits have at least one part in which
// they differ in at most `flips` bits. So it is enough to look up each part of a word with up to `flips` of its bits
// inverted.
class WindowIndex {
public:
    WindowIndex(int windowSide, int leastDistance, int partCount)
        : n(windowSide), distance(leastDistance), flips((distance - 1) / partCount) {
        int shift = 0;
        for (int part = 0; part < partCount; ++part) {
            const int width = (n * n - shift) / (partCount - part);
            Part made{shift, (Word{1} << width) - 1, {}, {}, {}};
            made.heads.assign(std::size_t{1} << width, -1);
            made.patterns.push_back(0);
            addPatterns(made.patterns, 0, 0, width, flips);
            parts.push_back(std::move(made));
            shift += width;
        }
    }

    [[nodiscard]] bool accepts(Word word) const {
        if (isLikeItselfTurned(word, allOnes(n), n, distance)) {
            return false;
        }
        for (const Part &part : parts) {
            const Word key = (word >> part.shift) & part.mask;
            for (const Word pattern : part.patterns) {
                for (int entry = part.heads[key ^ pattern]; entry >= 0; entry = part.next[index(entry)]) {
                    if (onesIn(allWords[index(entry)] ^ word) < distance) {
                        return false;
                    }
                }
            }
        }
        return true;
    }

    void add(Word word) {
        for (int turn = 0; turn < 4; ++turn, word = turned(word, n)) {
            for (Part &part : parts) {
                int &head = part.heads[(word >> part.shift) & part.mask];
                part.next.push_back(head);
                head = static_cast<int>(allWords.size());
            }
            allWords.push_back(word);
        }
    }

    void removeLast() {
        for (int turn = 0; turn < 4; ++turn) {
            for (Part &part : parts) {
                part.heads[(allWords.back() >> part.shift) & part.mask] = part.next.back();
                part.next.pop_back();
            }
            allWords.pop_back();
        }
    }

    [[nodiscard]] const std::vector<Word> &words() const { return allWords; }

private:
    struct Part {
        int shift;                   // the part begins at this bit of the word
        Word mask;                   // applied after the shift
        std::vector<int> heads;      // for each key, the last word with this key; -1 if there is none
        std::vector<int> next;       // for each word, the previous word with the same key; -1 if there is none
        std::vector<Word> patterns;  // for each choice of up to `flips` bits of a key, a word with ones at these bits
    };

    static std::size_t index(int entry) { return static_cast<std::size_t>(entry); }

    static void addPatterns(std::vector<Word> &patterns, Word pattern, int from, int width, int flipCount) {
        for (int bit = from; flipCount > 0 && bit < width; ++bit) {
            patterns.push_back(pattern | Word{1} << bit);
            addPatterns(patterns, pattern | Word{1} << bit, bit + 1, width, flipCount - 1);
        }
    }

    int n;
    int distance;
    int flips;
    std::vector<Part> parts;
    std::vector<Word> allWords;
};

// A square grid of bits filled in reading order.
struct Grid {
    explicit Grid(int sideOfGrid) : side(sideOfGrid), bits(static_cast<std::size_t>(sideOfGrid * sideOfGrid)) {}

    [[nodiscard]] bool hasWindowEndingAt(int cell, int n) const { return cell % side >= n - 1 && cell / side >= n - 1; }

    // Returns the window of side n whose last square is `cell`.
    [[nodiscard]] Word windowEndingAt(int cell, int n) const {
        Word word = 0;
        for (int row = 0; row < n; ++row) {
            for (int column = 0; column < n; ++column) {
                const int at = cell - (n - 1 - row) * side - (n - 1 - column);
                word |= Word{bits[static_cast<std::size_t>(at)]} << (row * n + column);
            }
        }
        return word;
    }

    int side;
    std::vector<std::uint8_t> bits;
};

// Fills a grid. `tryCell(cell)` puts a bit into a square and returns false if neither value works. `undo(cell)`
// reverses the last successful `tryCell`. Returns how often a square had to be emptied.
template <typename TryCell, typename Undo>
int fill(int cellCount, std::mt19937_64 &random, const TryCell &tryCell, const Undo &undo) {
    int emptied = 0;
    int furthest = 0;
    int failures = 0;
    for (int cell = 0; cell < cellCount;) {
        if (tryCell(cell)) {
            ++cell;
            continue;
        }
        // The more often the filling fails without getting further, the more squares may be emptied at once.
        failures = cell > furthest ? 1 : failures + 1;
        furthest = std::max(furthest, cell);
        const int reach = 4 + failures / 16;
        const int back = std::min(cell, 1 + static_cast<int>(random() % static_cast<unsigned>(reach)));
        for (int step = 0; step < back; ++step) {
            undo(--cell);
        }
        emptied += back;
    }
    return emptied;
}

class PlaneMaker {
public:
    explicit PlaneMaker(std::mt19937_64 &generator) : random(generator), plane(planeSide) {
        for (WindowIndex &index : indexes) {
            // Windows must also differ from a board with no marks and from a board with a mark in every square.
            index.add(0);
            index.add(~Word{0} & allOnes(sideOf(index)));
        }
    }

    int make() {
        return fill(
            planeSide * planeSide, random, [this](int cell) { return tryCell(cell); },
            [this](int cell) { undo(cell); });
    }

    [[nodiscard]] const Grid &grid() const { return plane; }
    // Returns the windows of side n, in four orientations each. They include a window without marks and a window with
    // a mark in every square.
    [[nodiscard]] const std::vector<Word> &words(int n) const {
        return indexes[static_cast<std::size_t>(n - 5)].words();
    }

private:
    int sideOf(const WindowIndex &index) const { return 5 + static_cast<int>(&index - indexes.data()); }

    bool tryCell(int cell) {
        std::uint8_t &bit = plane.bits[static_cast<std::size_t>(cell)];
        bit = static_cast<std::uint8_t>(random() & 1U);
        if (!accepts(cell)) {
            bit ^= 1U;
            if (!accepts(cell)) {
                return false;
            }
        }
        for (WindowIndex &index : indexes) {
            if (plane.hasWindowEndingAt(cell, sideOf(index))) {
                index.add(plane.windowEndingAt(cell, sideOf(index)));
            }
        }
        return true;
    }

    bool accepts(int cell) const {
        return std::all_of(indexes.begin(), indexes.end(), [&](const WindowIndex &index) {
            const int n = sideOf(index);
            return !plane.hasWindowEndingAt(cell, n) || index.accepts(plane.windowEndingAt(cell, n));
        });
    }

    void undo(int cell) {
        for (WindowIndex &index : indexes) {
            if (plane.hasWindowEndingAt(cell, sideOf(index))) {
                index.removeLast();
            }
        }
    }

    std::mt19937_64 &random;
    Grid plane;
    std::array<WindowIndex, 4> indexes{
        WindowIndex(5, planeWindowDistance(5), 2), WindowIndex(6, planeWindowDistance(6), 2),
        WindowIndex(7, planeWindowDistance(7), 3), WindowIndex(8, planeWindowDistance(8), 4)};
};

// Fills the tiles, one after the other. Their windows differ from each other and from those of the finished plane.
class TileMaker {
public:
    TileMaker(std::mt19937_64 &generator, const PlaneMaker &finishedPlane) : random(generator), plane(finishedPlane) {
        for (const int n : sides) {
            windowsOf(n).push_back({0, allOnes(n)});
            windowsOf(n).push_back({allOnes(n), allOnes(n)});
        }
    }

    // Makes the next tile and stores its bits in `to`. Returns how often a square had to be emptied.
    int make(Grid &to) {
        tile = &to;
        return fill(
            tileSide * tileSide, random, [this](int cell) { return tryCell(cell); }, [this](int cell) { undo(cell); });
    }

private:
    static constexpr std::array<int, 2> sides{7, 8};

    struct Window {
        Word word;
        Word mask;
    };

    std::vector<Window> &windowsOf(int n) { return windows[static_cast<std::size_t>(n - sides[0])]; }

    bool tryCell(int cell) {
        std::uint8_t &bit = tile->bits[static_cast<std::size_t>(cell)];
        // A square that is not free carries the information block. Its bit is 0 here, and no comparison counts it.
        const bool isFree = pattern_code::carriesPosition(cell % tileSide, cell / tileSide);
        bit = isFree ? static_cast<std::uint8_t>(random() & 1U) : std::uint8_t{0};
        if (!accepts(cell)) {
            bit ^= 1U;
            if (!isFree || !accepts(cell)) {
                return false;
            }
        }
        for (const int n : sides) {
            if (tile->hasWindowEndingAt(cell, n)) {
                Window window = windowEndingAt(cell, n);
                for (int turn = 0; turn < 4; ++turn) {
                    windowsOf(n).push_back(window);
                    window = {turned(window.word, n), turned(window.mask, n)};
                }
            }
        }
        return true;
    }

    bool accepts(int cell) {
        // The plane has by far the most windows, so it is checked last.
        const auto holds = [&](bool (TileMaker::*isFine)(const Window &, int)) {
            return std::all_of(sides.begin(), sides.end(), [&](int n) {
                return !tile->hasWindowEndingAt(cell, n) || (this->*isFine)(windowEndingAt(cell, n), n);
            });
        };
        return holds(&TileMaker::isUnlikeTiles) && holds(&TileMaker::isUnlikePlane);
    }

    bool isUnlikeTiles(const Window &window, int n) {
        const std::vector<Window> &tiles = windowsOf(n);
        const int distance = tileWindowDistance(n);
        return !isLikeItselfTurned(window.word, window.mask, n, distance) &&
               std::none_of(tiles.begin(), tiles.end(), [&](const Window &other) {
                   return onesIn((other.word ^ window.word) & window.mask & other.mask) < distance;
               });
    }

    bool isUnlikePlane(const Window &window, int n) {
        const std::vector<Word> &words = plane.words(n);
        const int distance = tileWindowDistance(n);
        return std::none_of(words.begin(), words.end(),
                            [&](Word other) { return onesIn((other ^ window.word) & window.mask) < distance; });
    }

    void undo(int cell) {
        for (const int n : sides) {
            if (tile->hasWindowEndingAt(cell, n)) {
                windowsOf(n).resize(windowsOf(n).size() - 4);
            }
        }
    }

    [[nodiscard]] Window windowEndingAt(int cell, int n) const {
        Word mask = 0;
        for (int row = 0; row < n; ++row) {
            for (int column = 0; column < n; ++column) {
                const int atColumn = cell % tileSide - (n - 1 - column);
                const int atRow = cell / tileSide - (n - 1 - row);
                mask |= Word{pattern_code::carriesPosition(atColumn, atRow) ? 1U : 0U} << (row * n + column);
            }
        }
        return {tile->windowEndingAt(cell, n) & mask, mask};
    }

    std::mt19937_64 &random;
    const PlaneMaker &plane;
    Grid *tile = nullptr;
    std::array<std::vector<Window>, 2> windows;
};

// Writes each row of the grid as words of tileSide bits. The leftmost square is the highest bit of a word.
void write(std::FILE *file, const Grid &grid) {
    for (int row = 0; row < grid.side; ++row) {
        std::fputs(grid.side > tileSide ? "{" : "", file);
        for (int column = 0; column < grid.side; column += tileSide) {
            unsigned word = 0;
            for (int bit = 0; bit < tileSide; ++bit) {
                const int cell = row * grid.side + column + bit;
                word = word << 1U | grid.bits[static_cast<std::size_t>(cell)];
            }
            std::fprintf(file, "0x%04x%s", word, column + tileSide < grid.side ? ", " : "");
        }
        std::fputs(grid.side > tileSide ? "},\n" : row + 1 < grid.side ? ", " : "", file);
    }
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: generate_position_code PLANE.inc TILES.inc\n");
        return 2;
    }
    const auto start = std::chrono::steady_clock::now();
    const auto seconds = [start] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    std::mt19937_64 random(1);
    PlaneMaker plane(random);
    const int planeEmptied = plane.make();
    std::fprintf(stderr, "plane: %d squares emptied and filled again, %.1f s\n", planeEmptied, seconds());
    std::FILE *file = std::fopen(argv[1], "w");
    if (file == nullptr) {
        std::perror(argv[1]);
        return 1;
    }
    write(file, plane.grid());
    std::fclose(file);

    file = std::fopen(argv[2], "w");
    if (file == nullptr) {
        std::perror(argv[2]);
        return 1;
    }
    TileMaker tiles(random, plane);
    for (int tile = 0; tile < tileCount; ++tile) {
        Grid grid(tileSide);
        const int emptied = tiles.make(grid);
        std::fprintf(stderr, "tile %d: %d squares emptied and filled again, %.1f s\n", tile, emptied, seconds());
        std::fputs("{", file);
        write(file, grid);
        std::fputs("},\n", file);
    }
    std::fclose(file);
    return 0;
}
