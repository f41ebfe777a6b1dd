// SPDX-License-Identifier: Apache-2.0

#include "run_program.h"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

int run_with_files(const std::vector<std::string>& arguments, const std::string& in,
                   const std::string& out, const std::string& errors)
{
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, in.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, out.c_str(), O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, errors.c_str(), O_WRONLY, 0);

    std::vector<std::string> words = {PROGRAM_FILE};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);

    pid_t child = 0;
    const int error = posix_spawn(&child, PROGRAM_FILE, &files, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    if (error != 0)
        throw std::system_error(error, std::generic_category(), PROGRAM_FILE);
    int ended = 0;
    if (waitpid(child, &ended, 0) != child)
        throw std::system_error(errno, std::generic_category(), "waitpid");
    return WIFEXITED(ended) ? WEXITSTATUS(ended) : -1;
}

} // namespace

TemporaryFile::TemporaryFile(std::string_view content) : name_(folder_.path() / "file")
{
    std::ofstream(name_, std::ios::binary) << content;
}

std::string TemporaryFile::content() const
{
    std::ifstream file(name_, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

ProgramRun run_program(const std::vector<std::string>& arguments, std::string_view input)
{
    const TemporaryFile in(input);
    const TemporaryFile out;
    const TemporaryFile errors;
    const int status = run_with_files(arguments, in.name(), out.name(), errors.name());
    return {status, out.content(), errors.content()};
}

ProgramRun run_program_into(const std::string& output_file,
                            const std::vector<std::string>& arguments)
{
    const TemporaryFile errors;
    const int status = run_with_files(arguments, "/dev/null", output_file, errors.name());
    return {status, "", errors.content()};
}
