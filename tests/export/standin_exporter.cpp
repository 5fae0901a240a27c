// Takes the place of the tool: called with the same arguments, it does what the lines of its source
// file tell, and notes its start and its end in the file that KORVEL_STANDIN_LOG names.

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <unistd.h>

namespace
{

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// A test that went wrong leaves nobody waiting longer.
constexpr std::chrono::seconds longestWait(60);

struct Arguments {
    std::string source;
    std::string target;
    std::string effects;
};

std::string valueOf(const std::string &argument, const std::string &option)
{
    return argument.compare(0, option.size(), option) == 0 ? argument.substr(option.size()) : "";
}

// One write for a line, since several programs write at once.
void note(const std::string &event, const std::string &text)
{
    const char *path = std::getenv("KORVEL_STANDIN_LOG");
    if (path == nullptr) {
        return;
    }
    const auto now =
        std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch());
    std::ostringstream line;
    line << event << '\t' << getpid() << '\t' << now.count() << '\t' << text << '\n';
    const int file = open(path, O_WRONLY | O_APPEND | O_CREAT, 0600);
    const std::string bytes = line.str();
    if (write(file, bytes.data(), bytes.size()) != ssize_t(bytes.size())) {
        std::abort();
    }
    close(file);
}

void waitFor(const std::string &path)
{
    const auto end = Clock::now() + longestWait;
    while (access(path.c_str(), F_OK) != 0 && Clock::now() < end) {
        std::this_thread::sleep_for(milliseconds(2));
    }
}

// A byte every ten milliseconds.
void writeSlowly(const std::string &path, const std::string &text)
{
    for (const char character : text) {
        std::ofstream(path, std::ios::app) << character;
        std::this_thread::sleep_for(milliseconds(10));
    }
}

void copyFile(const std::string &from, const std::string &to)
{
    std::ofstream(to, std::ios::binary) << std::ifstream(from, std::ios::binary).rdbuf();
}

// The exit code that the lines ask for.
int obey(const Arguments &arguments)
{
    std::ifstream script(arguments.source);
    std::string line;
    while (std::getline(script, line)) {
        const std::size_t space = line.find(' ');
        const std::string command = line.substr(0, space);
        const std::string operand = space == std::string::npos ? "" : line.substr(space + 1);
        if (command == "exit") {
            return std::stoi(operand);
        }
        const std::map<std::string, std::function<void()>> commands = {
            {"wait", [&] { waitFor(operand); }},
            {"sleep", [&] { std::this_thread::sleep_for(milliseconds(std::stoi(operand))); }},
            {"deaf", [] { std::signal(SIGTERM, SIG_IGN); }},
            {"crash", [] { std::abort(); }},
            {"say", [&] { std::fprintf(stderr, "%s\n", operand.c_str()); }},
            {"write", [&] { writeSlowly(arguments.target, operand); }},
            {"effects", [&] { copyFile(arguments.effects, operand); }},
            {"ready", [&] { note("ready", arguments.target); }}};
        commands.at(command)();
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    Arguments arguments;
    for (int i = 1; i < argc; ++i) {
        note("argument", argv[i]);
        arguments.source += valueOf(argv[i], "--source=");
        arguments.target += valueOf(argv[i], "--target=");
        arguments.effects += valueOf(argv[i], "--effects=");
    }
    note("start", arguments.target);
    const int code = obey(arguments);
    note("end", arguments.target);
    return code;
}
