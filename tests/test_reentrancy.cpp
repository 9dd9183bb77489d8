// No scratch storage is shared between calls: routines called from several
// threads at once, each on its own arrays, give the bits of a lone call.
#include <atomic>
#include <functional>
#include <thread>

#include "fixtures.hpp"

TEST(Reentrancy, ConcurrentCallsGiveTheSerialBits) {
    const std::function<std::uint64_t()> jobs[] = {
        [] { Element e = distortedQuad(9); return e.membrane(), digest(e.estif) ^ digest(e.prop); },
        [] {
            Element e = distortedQuad(9);
            e.layout(6, 2, 53), e.bending(), e.gauss(2), e.shear();
            return digest(e.estif) ^ digest(e.prop);
        },
        [] { return digest(material(ortho(7))); },
        [] { auto l = crossPly(); return digest(rigidities(l).d) ^ digest(rigidities(l, 0, 1).s); },
        [] { return digest(Jacobian().run().cartd); },
        [] {
            int32_t m = 40, k = 30, n = 50;
            Floats a(k, m, 0.3f), b(n, k, 1.7f), c(n, m);
            return MATMULDLLDOTNET(a.p(), b.p(), c.p(), &m, &k, &n), digest(c);
        }};
    std::uint64_t serial[6];
    for (int j = 0; j < 6; ++j) serial[j] = jobs[j]();
    std::atomic<int> calls{0}, wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)  // each thread starts at another job: different routines overlap
        threads.emplace_back([&, t] {
            for (int i = t; i < t + 1000; ++i, ++calls) wrong += jobs[i % 6]() != serial[i % 6];
        });
    for (std::thread& t : threads) t.join();
    EXPECT_TRUE(calls == 4000 && wrong == 0) << wrong;
}
