#include "sample_data.h"

#include <cstdio>
#include <random>

namespace qmbench {

namespace {

const char* const kThings[] = {
    "Cordless drill", "Circular saw",  "Socket set",      "Table lamp",     "Road bike",     "Laptop",
    "Camera lens",    "Espresso maker", "Winter jacket",  "Garden hose",    "Microwave oven", "Desk chair",
    "Bookshelf",      "Vacuum cleaner", "Stereo receiver", "Wrist watch",   "Tent",          "Snow blower",
    "Air compressor", "Sewing machine", "Guitar amp",      "Coffee table",  "Printer",       "Headphones"};

const char* const kPlaces[] = {"Hardware store Main St", "Home Depot Springfield", "Online order",
                               "Garage sale",            "Best Buy Oak Mall",      "Sears downtown",
                               "Gift from Aunt May",     "Flea market",            "Costco Riverside"};

template <std::size_t N>
const char* pick(const char* const (&list)[N], std::mt19937& rng) {
    return list[std::uniform_int_distribution<std::size_t>(0, N - 1)(rng)];
}

std::string format(const char* fmt, auto... args) {
    char buf[96];
    int n = std::snprintf(buf, sizeof buf, fmt, args...);
    return std::string(buf, static_cast<std::size_t>(n));
}

} // namespace

std::vector<std::vector<std::string>> sampleItems(int count, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_int_distribution<int> cents(499, 199999), month(1, 12), day(1, 28), year(1995, 2023), years(1, 5),
        depreciation(20, 100), letter(0, 25), model(1000, 9999);
    std::vector<std::vector<std::string>> items;
    items.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        int cost = cents(rng);
        int value = cost * depreciation(rng) / 100;
        int m = month(rng), d = day(rng), y = year(rng);
        items.push_back({format("%s %05d", pick(kThings, rng), i + 1), format("%d.%02d", cost / 100, cost % 100),
                         format("%d.%02d", value / 100, value % 100), pick(kPlaces, rng), format("%d/%d/%d", m, d, y),
                         format("%d/%d/%d", m, d, y + years(rng)),
                         format("SN %c%c-%d-%05d", 'A' + letter(rng), 'A' + letter(rng), model(rng), i + 1)});
    }
    return items;
}

} // namespace qmbench
