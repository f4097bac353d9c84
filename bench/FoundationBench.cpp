// JSON text to values and back, beside RapidJSON's own DOM on the same bytes.
#include <benchmark/benchmark.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "support/DocumentGenerator.h"
#include "velmo/foundation/Json.h"

namespace {

const std::string& document() {
    static const std::string text = velmo::bench::generateDocumentJsonOfSize(20u << 20);
    return text;
}

void BM_ParseToValue(benchmark::State& state) {
    const std::string& text = document();
    for (auto _ : state)
        benchmark::DoNotOptimize(velmo::Json::parse(text));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void BM_ParseRapidJsonDocument(benchmark::State& state) {
    const std::string& text = document();
    for (auto _ : state) {
        rapidjson::Document doc;
        doc.Parse<rapidjson::kParseFullPrecisionFlag>(text.data(), text.size());
        benchmark::DoNotOptimize(doc.IsObject());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void BM_WriteValue(benchmark::State& state) {
    const velmo::Value value = velmo::Json::parse(document());
    std::size_t bytes = 0;
    for (auto _ : state) {
        const std::string out = velmo::Json::write(value);
        bytes = out.size();
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

void BM_WriteRapidJsonDocument(benchmark::State& state) {
    rapidjson::Document doc;
    doc.Parse<rapidjson::kParseFullPrecisionFlag>(document().data(), document().size());
    std::size_t bytes = 0;
    for (auto _ : state) {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        doc.Accept(writer);
        bytes = buffer.GetSize();
        benchmark::DoNotOptimize(buffer.GetString());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

} // namespace

BENCHMARK(BM_ParseToValue)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ParseRapidJsonDocument)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WriteValue)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WriteRapidJsonDocument)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
