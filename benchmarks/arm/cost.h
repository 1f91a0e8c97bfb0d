// SPDX-License-Identifier: Apache-2.0
// Cost: what is counted of one kernel. An area's file returns its list; main.cpp runs them all.
#ifndef KORVANE_BENCHMARKS_ARM_COST_H_
#define KORVANE_BENCHMARKS_ARM_COST_H_

#include <functional>
#include <string>
#include <vector>

#include "benchmarks/arm/scene.h"

namespace korvane::arm {

using Work = std::function<void(Scene&)>;

struct Cost {
    std::string kernel;
    Work ours;
    // The plain form, whose result ours must equal to the last bit; empty where there is none.
    Work twin;
    // Brings in what the kernel works on in place. It runs before each run, uncounted.
    Work prepare;
    // The result as bytes; empty: Scene::out.
    std::function<std::vector<uint8_t>(const Scene&)> result;
};

struct Peer {
    std::string kernel;  // what it is compared with
    std::string name;
    Work work;
    // How far, in the mean of all result bytes, it may be from ours; below 0 where its result has another layout.
    double tolerance = -1;
    Work prepare;
};

std::vector<Cost> blur_costs();
std::vector<Cost> analysis_costs();
std::vector<Cost> conversion_costs();
std::vector<Cost> capture_costs();
std::vector<Cost> codec_costs();

// What the table sets beside our kernels. Codecs need no foreign library but the one that ours stands on.
std::vector<Peer> codec_peers();
std::vector<Peer> vision_peers();
std::vector<Peer> conversion_peers();

}  // namespace korvane::arm

#endif  // KORVANE_BENCHMARKS_ARM_COST_H_
