#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

/// Two ways of doing one thing, timed in turn in one process, so that a machine that slows down slows both.
namespace pair {

enum class Wanted { SubjectFaster, SubjectTime };

template<typename Work>
double Seconds(Work&& a_work)
{
    const auto begin = std::chrono::steady_clock::now();
    a_work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

inline double Median(std::vector<double> a_values)
{
    std::sort(a_values.begin(), a_values.end());
    return a_values[a_values.size() / 2];
}

/// Times a_subject and a_other in turn, each after its untimed preparation. The benchmark's time is the subject's. The
/// counter "times_faster" is the other's median time over the subject's, "of_the_time" is its inverse; one of them is
/// reported, whichever the claim is made in, and beside it the "bar" that the project sets itself.
template<typename PrepareSubject, typename Subject, typename PrepareOther, typename Other>
void Run(benchmark::State& a_state, Wanted a_wanted, double a_bar, PrepareSubject&& a_prepareSubject,
         Subject&& a_subject, PrepareOther&& a_prepareOther, Other&& a_other)
{
    std::vector<double> subject;
    std::vector<double> other;
    for (auto _ : a_state) {
        a_prepareSubject();
        subject.push_back(Seconds(a_subject));
        a_prepareOther();
        other.push_back(Seconds(a_other));
        a_state.SetIterationTime(subject.back());
    }
    if (subject.empty())
        return;
    const double ratio = Median(other) / Median(subject);
    if (a_wanted == Wanted::SubjectFaster)
        a_state.counters["times_faster"] = ratio;
    else
        a_state.counters["of_the_time"] = 1.0 / ratio;
    a_state.counters["bar"] = a_bar;
}

} // namespace pair
