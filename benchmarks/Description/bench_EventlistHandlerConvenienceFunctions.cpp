// The public steps that make a description: how they grow with languages and with arguments.

#include "Description/EventlistHandlerConvenienceFunctions.h"

#include "Support/BenchmarkEvent.h"

#include "Platform/ReadAllTextsHelper.h"

#include <QCoreApplication>
#include <QJsonObject>
#include <QVariantMap>

#include <benchmark/benchmark.h>

#include <cstdio>

namespace
{
QString textFolder;

BenchmarkEvent eventOf(const benchmark::State& state)
{
    return {textFolder + QString::number(state.range(0)), int(state.range(1)), 0};
}

QJsonObject metaDataOf(const BenchmarkEvent& event, const QVariantMap& texts)
{
    QJsonObject metaData;
    EventlistHandlerConvenienceFunctions::generateMetaData(
        metaData, texts, event.arguments, event.urlArguments, event.texts, event.url);
    return metaData;
}

void generateMetaData(benchmark::State& state)
{
    const BenchmarkEvent event = eventOf(state);
    const QVariantMap texts = ReadAllTextsHelper::getAllTextsAsVariantMap(event.texts, event.url);
    for (auto unused : state)
    {
        Q_UNUSED(unused)
        benchmark::DoNotOptimize(metaDataOf(event, texts));
    }
}

void generateDescriptionTextlist(benchmark::State& state)
{
    const BenchmarkEvent event = eventOf(state);
    const QJsonObject metaData =
        metaDataOf(event, ReadAllTextsHelper::getAllTextsAsVariantMap(event.texts, event.url));
    for (auto unused : state)
    {
        Q_UNUSED(unused)
        QVariantMap textList;
        EventlistHandlerConvenienceFunctions::generateDescriptionTextlist(textList, metaData);
        benchmark::DoNotOptimize(textList);
    }
}

const std::vector<std::int64_t> languages = {2, 10, 30};
const std::vector<std::int64_t> arguments = {0, 2, 20};
BENCHMARK(generateMetaData)->ArgsProduct({languages, arguments});
BENCHMARK(generateDescriptionTextlist)->ArgsProduct({languages, arguments});
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (argc != 2)
    {
        std::fputs("The text folder is missing.\n", stderr);
        return 2;
    }
    textFolder = QString::fromLocal8Bit(argv[1]) + QLatin1Char('/');
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
