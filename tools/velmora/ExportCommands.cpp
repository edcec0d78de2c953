#include "Tool.h"

#include <iostream>

namespace tool {

void addExportCommands(CLI::App& app) {
    {
        auto* command = app.add_subcommand("export-asm", "Write a model as a BGLC-style listing");
        auto model = std::make_shared<std::string>();
        auto output = std::make_shared<std::string>();
        command->add_option("MODEL", *model, "Model file (.mdl)")->required();
        command->add_option("-o,--output", *output, "Listing to write (.asm)")->required();
        command->callback([model, output] {
            const auto loaded = loadModel(*model);
            writeWhole(*output,
                       [&](const std::string& temporary) { loaded->exportASM(temporary); });
            std::cout << "Wrote listing " << *output << "\n";
        });
    }
    {
        auto* command =
            app.add_subcommand("export-flt", "Write a model as an OpenFlight database (16.0)");
        auto model = std::make_shared<std::string>();
        auto output = std::make_shared<std::string>();
        auto texFormat = std::make_shared<std::string>("bmp");
        auto noAttr = std::make_shared<bool>(false);
        command->add_option("MODEL", *model, "Model file (.mdl)")->required();
        command->add_option("-o,--output", *output, "Database to write (.flt)")->required();
        command
            ->add_option("--tex-format", *texFormat,
                         "Extension that replaces .bmp in the texture names")
            ->capture_default_str();
        command->add_flag("--no-attr", *noAttr, "Write no texture attribute files");
        command->callback([model, output, texFormat, noAttr] {
            const auto loaded = loadModel(*model);
            writeWhole(*output, [&](const std::string& temporary) {
                loaded->exportFLT(temporary, *texFormat, !*noAttr);
            });
            std::cout << "Wrote OpenFlight database " << *output;
            if (!*noAttr && loaded->TextureList()->Count() > 0) {
                std::cout << " and " << loaded->TextureList()->Count()
                          << " texture attribute file(s) beside it";
            }
            std::cout << "\n";
        });
    }
}

}  // namespace tool
