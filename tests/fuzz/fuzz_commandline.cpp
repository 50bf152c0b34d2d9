// What a person types at the simulator: its words, and what each command answers.

#include "commandinterpreter.h"
#include "commandwords.h"
#include "devicesimulator.h"
#include "fuzzing.h"

#include <QCoreApplication>

#include <algorithm>

namespace
{

constexpr int longestWord = 16;
constexpr int mostWords = 6;
constexpr int mostLines = 6;

struct Command {
    const char *name;
    int fewest;
    int most;
    bool isAnsweredInOneLine;
};

const std::vector<Command> commands = {
    {"help", 0, 0, false},
    {"status", 0, 0, false},
    {"set-key", 0, 1, true},
    {"clear-key", 0, 0, true},
    {"server-key", 1, 1, true},
    {"set-remote-id", 1, 1, true},
    {"clear-remote-id", 0, 0, true},
    {"internet", 1, 1, true},
    {"create-widget", 1, 1, true},
    {"delete-widget", 1, 1, true},
    {"start-service", 1, 1, true},
    {"stop-service", 1, 1, true},
    {"list", 0, 0, false},
    {"add-app", 3, 4, true},
    {"remove-app", 1, 1, true},
    {"fail", 2, 2, true},
    {"delay", 2, 2, true},
    {"close", 1, 1, true},
    {"no-json", 1, 1, true},
    {"heal", 0, 0, true},
    {"register", 3, 3, true},
    {"update", 4, 4, true},
    {"delete", 3, 3, true},
    {"quit", 0, 0, true},
    {"note", 1, 1, true},
};

const std::vector<QString> usualWords = {
    QStringLiteral("on"),    QStringLiteral("off"),       QStringLiteral("always"),
    QStringLiteral("1"),     QStringLiteral("1000000"),   QStringLiteral("1000001"),
    QStringLiteral("0"),     QStringLiteral("-1"),        QStringLiteral("503"),
    QStringLiteral("app-1"), QStringLiteral("daemon"),    QStringLiteral("widget-manager"),
    QStringLiteral("%1"),    QStringLiteral("a\n\t\"\\"), QString(QChar(0x2028)),
    QStringLiteral("")};

QString quotedWord(const QString &word)
{
    QString quoted;
    for (const QChar letter : word) {
        if (letter == QLatin1Char('\n')) {
            quoted += QStringLiteral("\\n");
        } else {
            const bool isSpecial = letter == QLatin1Char('"') || letter == QLatin1Char('\\');
            quoted += isSpecial ? QString(QLatin1Char('\\')) + letter : QString(letter);
        }
    }
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QString quotedLine(const QStringList &words)
{
    QStringList quoted;
    std::transform(words.cbegin(), words.cend(), std::back_inserter(quoted), quotedWord);
    return quoted.join(QLatin1Char(' '));
}

QStringList takeWords(FuzzedDataProvider &input, int count)
{
    QStringList words;
    for (int i = 0; i < count; ++i) {
        words.append(input.ConsumeBool() ? takeOneOf(input, usualWords) : takeText(input, longestWord));
    }
    return words;
}

void checkWords(FuzzedDataProvider &input)
{
    const QStringList words = takeWords(input, input.ConsumeIntegralInRange<int>(0, mostWords));
    QStringList split;
    require(splitCommandWords(quotedLine(words), split), "a line whose quotes are closed is split");
    require(split == words, "words that are quoted come back");

    const QString line = QString::fromUtf8(takeRest(input));
    if (splitCommandWords(line, split)) {
        QStringList again;
        require(splitCommandWords(quotedLine(split), again) && again == split,
                "split words, quoted, come back");
    }
}

/// What the commands must have made of the device and the server.
struct Model {
    int applications = 0;
    QStringList widgets;
};

bool isBreaking(QChar letter)
{
    return letter.category() == QChar::Other_Control || letter == QChar::LineSeparator ||
           letter == QChar::ParagraphSeparator;
}

void requireAnswer(const Command *command, const QStringList &words, const QString &answer)
{
    require(!answer.isEmpty(), "a command is answered");
    require(!answer.endsWith(QLatin1Char('\n')), "an answer has no line end");
    require(std::none_of(answer.cbegin(), answer.cend(),
                         [](QChar letter) { return letter != QLatin1Char('\n') && isBreaking(letter); }),
            "an answer holds nothing that breaks its lines");
    if (command == nullptr) {
        require(answer.startsWith(QStringLiteral("error: no such command: \"")),
                "an unknown command is refused");
    } else if (words.size() < command->fewest || words.size() > command->most) {
        require(answer.startsWith(QStringLiteral("error: usage: ") + QLatin1String(command->name)),
                "a wrong number of words is answered with the right one");
    } else {
        require(!answer.startsWith(QStringLiteral("error: usage: ")), "a right number of words is taken");
    }
    const bool mayHaveLines = command != nullptr && !command->isAnsweredInOneLine;
    require(mayHaveLines || !answer.contains(QLatin1Char('\n')), "the answer is one line");
}

void follow(Model &model, const QString &name, const QStringList &words, const QString &answer)
{
    if (answer.startsWith(QStringLiteral("error"))) {
        const bool wasThere = name == QStringLiteral("delete-widget") && words.size() == 1 &&
                              model.widgets.contains(words.at(0));
        require(!wasThere, "a widget that is there can be removed");
        return;
    }
    if (name == QStringLiteral("add-app")) {
        ++model.applications;
    } else if (name == QStringLiteral("remove-app")) {
        --model.applications;
    } else if (name == QStringLiteral("create-widget")) {
        model.widgets.append(words.at(0));
    } else if (name == QStringLiteral("delete-widget")) {
        require(model.widgets.contains(words.at(0)), "only a widget that is there is removed");
    } else if (name == QStringLiteral("list")) {
        const QString first = QStringLiteral("the server holds %1 application(s)").arg(model.applications);
        requireEqual(answer.section(QLatin1Char('\n'), 0, 0), first, "the number of applications");
        requireEqual(answer.count(QLatin1Char('\n')), model.applications, "a line an application");
    }
}

void execute(DeviceSimulator &simulator, CommandInterpreter &interpreter, Model &model, const QString &line)
{
    QStringList words;
    const QString answer = interpreter.execute(line);
    if (!splitCommandWords(line, words)) {
        requireEqual(answer, QStringLiteral("error: a quote is left open"), "an open quote");
        return;
    }
    if (words.isEmpty()) {
        requireEqual(answer, QString(), "the answer to nothing");
        return;
    }
    const QString name = words.takeFirst();
    const auto found = std::find_if(commands.cbegin(), commands.cend(),
                                    [&](const Command &each) { return name == QLatin1String(each.name); });
    requireAnswer(found == commands.cend() ? nullptr : &*found, words, answer);
    follow(model, name, words, answer);
    model.widgets = simulator.widgetManager().widgets();
    requireEqual(simulator.server().applications().size(), model.applications, "the server's applications");
}

QString takeLine(FuzzedDataProvider &input)
{
    if (input.ConsumeIntegralInRange<int>(0, 3) == 0) {
        return takeText(input, 4 * longestWord);
    }
    const Command &command = takeOneOf(input, commands);
    const int count = input.ConsumeBool() ? command.fewest : input.ConsumeIntegralInRange<int>(0, mostWords);
    return quotedLine(QStringList{QLatin1String(command.name)} + takeWords(input, count));
}

void beginAnew(DeviceSimulator &simulator)
{
    simulator.server().removeAllApplications();
    simulator.server().clearFaults();
    simulator.setApiKeyQuietly(QStringLiteral("secret"));
    simulator.daemon().setRemoteId(QStringLiteral("d9"));
    simulator.widgetManager().setWidgetsQuietly({});
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void checkLines(FuzzedDataProvider &input)
{
    // One for all inputs: making one starts threads.
    static DeviceSimulator simulator(QStringLiteral("unix:path=/dev/null"));
    static CommandInterpreter interpreter(simulator);
    Model model;
    const int count = input.ConsumeIntegralInRange<int>(1, mostLines);
    for (int i = 0; i < count; ++i) {
        execute(simulator, interpreter, model, takeLine(input));
    }
    execute(simulator, interpreter, model, QStringLiteral("list"));
    execute(simulator, interpreter, model, QStringLiteral("status"));
    beginAnew(simulator);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    if (input.ConsumeBool()) {
        checkWords(input);
    } else {
        checkLines(input);
    }
    return 0;
}
