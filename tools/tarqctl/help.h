// The one shape of all help: usage, one sentence, arguments, options, an example.
#pragma once

#include <CLI/App.hpp>
#include <string>

namespace tarq::tools {

// "usage: tarqctl [OPTIONS] setprop NAME VALUE\n"
std::string usageOf(const CLI::App& app);

class HelpFormatter : public CLI::FormatterBase {
  public:
    // coloured: titles are bold.
    explicit HelpFormatter(bool coloured) : mColoured(coloured) {}

    std::string make_help(const CLI::App* app, std::string name,
                          CLI::AppFormatMode mode) const override;

  private:
    const bool mColoured;
};

}  // namespace tarq::tools
