// SPDX-License-Identifier: Apache-2.0

#include "run_program.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <sys/wait.h>

namespace {

/// As a word of a shell command.
std::string shell_word(const std::string& text)
{
    std::string word = "'";
    for (const char c : text) {
        if (c == '\'')
            word += R"('\'')";
        else
            word += c;
    }
    return word + '\'';
}

std::string make_folder()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "program-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
    return pattern;
}

} // namespace

TemporaryFile::TemporaryFile(std::string_view content)
    : folder_(make_folder()), name_(folder_ + "/file")
{
    std::ofstream(name_, std::ios::binary) << content;
}

TemporaryFile::~TemporaryFile()
{
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
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
    std::string command = shell_word(PROGRAM_FILE);
    for (const std::string& argument : arguments)
        command += ' ' + shell_word(argument);
    command += " <" + shell_word(in.name()) + " >" + shell_word(out.name()) + " 2>" +
               shell_word(errors.name());
    const int ended = std::system(command.c_str());
    return {WIFEXITED(ended) ? WEXITSTATUS(ended) : -1, out.content(), errors.content()};
}
