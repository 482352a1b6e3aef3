#pragma once

#include <string>

#include "driver/Measurement.h"

// Results for people, and in files.

// Three figures that count, without an exponent.
std::string shortNumber(double number);

void printHeading();
void print(const BenchmarkResult& result);

void writeResults(const BenchmarkResults& results, const std::string& path);
BenchmarkResults readResults(const std::string& path);

// What has become of each job from the first file to the second.
void printComparison(const BenchmarkResults& before, const BenchmarkResults& after);
