// SPDX-License-Identifier: Apache-2.0
// Runs each kernel on one picture, between marks for the counting plugin, after its result was found right. arm_cost.py
// starts it under qemu and reads the lines "RUN <tab> KERNEL <tab> WHO" beside the plugin's figures; run 0 does nothing
// and shows what the marks themselves cost.
//
// Arguments: which of "ours", "twin" and "peer" to count, and "only=TEXT" for the kernels with TEXT in their names.
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "benchmarks/arm/cost.h"
#include "benchmarks/arm/mark.h"

namespace korvane::arm {
namespace {

using Bytes = std::vector<uint8_t>;

struct Options {
    bool ours = false;
    bool twin = false;
    bool peer = false;
    std::string only;
};

class Runner {
  public:
    explicit Runner(Options options) : m_Options(std::move(options)) {
        count(
            {}, [](Scene& /*s*/) {}, "", "nothing");
    }

    void run(const Cost& cost, const std::vector<Peer>& peers) {
        if (cost.kernel.find(m_Options.only) == std::string::npos) {
            return;
        }
        const Bytes expected = result(cost, cost.ours, cost.prepare);
        require(expected != untouched(cost), cost, "changes nothing");
        if (cost.twin) {
            require(result(cost, cost.twin, cost.prepare) == expected, cost, "differs from its scalar twin");
        }
        if (m_Options.ours) {
            count(cost.prepare, cost.ours, cost.kernel, "ours");
        }
        if (m_Options.twin && cost.twin) {
            count(cost.prepare, cost.twin, cost.kernel, "twin");
        }
        for (const Peer& peer : peers) {
            if (m_Options.peer && peer.kernel == cost.kernel) {
                const Bytes given = result(cost, peer.work, peer.prepare);
                require(peer.tolerance < 0 || mean_difference(given, expected) <= peer.tolerance, cost,
                        "is far from " + peer.name);
                count(peer.prepare, peer.work, cost.kernel, peer.name);
            }
        }
    }

  private:
    static void require(bool isRight, const Cost& cost, const std::string& what) {
        if (!isRight) {
            std::fprintf(stderr, "arm_cost: %s %s\n", cost.kernel.c_str(), what.c_str());
            std::exit(1);
        }
    }

    static double mean_difference(const Bytes& a, const Bytes& b) {
        double sum = 0;
        for (size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
            sum += std::abs(a[i] - b[i]);
        }
        return a.size() == b.size() ? sum / static_cast<double>(a.size()) : 255;
    }

    void prepare(const Work& prepare) {
        std::fill(m_Scene.out.begin(), m_Scene.out.end(), uint8_t{0});
        std::fill(m_Scene.sums.begin(), m_Scene.sums.end(), 0);
        m_Scene.corners.clear();
        if (prepare) {
            prepare(m_Scene);
        }
    }

    Bytes result_now(const Cost& cost) { return cost.result ? cost.result(m_Scene) : m_Scene.out; }

    Bytes untouched(const Cost& cost) {
        m_Scene.palette.clear();
        prepare(cost.prepare);
        return result_now(cost);
    }

    Bytes result(const Cost& cost, const Work& work, const Work& first) {
        prepare(first);
        work(m_Scene);
        return result_now(cost);
    }

    void count(const Work& first, const Work& work, const std::string& kernel, const std::string& who) {
        prepare(first);
        syscall(kMarkSystemCall, 2 * m_Runs);
        work(m_Scene);
        syscall(kMarkSystemCall, 2 * m_Runs + 1);
        std::printf("%ld\t%s\t%s\n", m_Runs, kernel.c_str(), who.c_str());
        ++m_Runs;
    }

    const Options m_Options;
    Scene m_Scene;
    long m_Runs = 0;
};

Options options_of(int count, char** arguments) {
    Options options;
    for (int i = 1; i < count; ++i) {
        const std::string_view argument = arguments[i];
        options.ours = options.ours || argument == "ours";
        options.twin = options.twin || argument == "twin";
        options.peer = options.peer || argument == "peer";
        if (argument.substr(0, 5) == "only=") {
            options.only = argument.substr(5);
        }
    }
    return options;
}

template <typename Item, typename... Lists>
std::vector<Item> joined(const Lists&... lists) {
    std::vector<Item> all;
    (all.insert(all.end(), lists.begin(), lists.end()), ...);
    return all;
}

}  // namespace
}  // namespace korvane::arm

int main(int count, char** arguments) {
    using namespace korvane::arm;
    // Or a kernel's figure would depend on who came before, by what the heap has grown to or given back.
    // Pictures come fresh from the system; the heap for what is smaller never has room for one.
    constexpr int kPictureBytes = 1 << 20;
    mallopt(M_MMAP_THRESHOLD, kPictureBytes);
    mallopt(M_TOP_PAD, kPictureBytes / 2);
    mallopt(M_TRIM_THRESHOLD, kPictureBytes);
    Runner runner(options_of(count, arguments));
    std::vector<Peer> peers = codec_peers();
#if defined(KORVANE_ARM_PEERS)
    peers = joined<Peer>(peers, vision_peers(), conversion_peers());
#endif
    for (const Cost& cost :
         joined<Cost>(blur_costs(), analysis_costs(), conversion_costs(), capture_costs(), codec_costs())) {
        runner.run(cost, peers);
    }
    return 0;
}
