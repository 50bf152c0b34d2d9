// What the manager does for each request: its body, and the task of a description among many.

#include "descriptions.h"
#include "formbody.h"
#include "measures.h"
#include "remoteappsapi.h"
#include "remotetaskwithdescription.h"
#include "tasksbydescription.h"
#include "turns.h"

#include <memory>
#include <vector>

namespace
{
constexpr int manyTasks = 10000;

RemoteTaskDescription registration(int number)
{
    return Descriptions::registration(QStringLiteral("w%1").arg(number, 6, 10, QLatin1Char('0')),
                                      QStringLiteral("Clock"), QStringLiteral("t"));
}

void body(benchmark::State &state)
{
    const RemoteTaskDescription descr = registration(1);
    const auto remoteId = QStringLiteral("d9");

    measureTurns(state,
                 [&] { return requestBody(RemoteAppsApi::parameters(descr, remoteId), QByteArray()); });
}
BENCHMARK(body);

void lookUpAmong10000(benchmark::State &state)
{
    TasksByDescription tasks;
    std::vector<std::unique_ptr<RemoteTaskWithDescription>> owned;
    for (int number = 0; number < manyTasks; ++number) {
        owned.push_back(std::make_unique<RemoteTaskWithDescription>(registration(number)));
        require(tasks.store(owned.back()->description, owned.back().get()) == nullptr,
                QStringLiteral("two tasks have one description"));
    }
    const RemoteTaskDescription wanted = registration(manyTasks / 2);
    require(tasks.find(wanted) != nullptr, QStringLiteral("the task is not found"));

    measureTurns(state, [&] { return tasks.find(wanted); });
}
BENCHMARK(lookUpAmong10000);
} // namespace
