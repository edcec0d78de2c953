#include "Tool.h"

#include <iostream>

namespace tool {

void addExportCommands(CLI::App& app) {
    {
        auto* command = addCommand(app, "export-asm", "Write a model as a BGLC-style listing",
                                   "velmora export-asm MODEL.mdl -o OUT.asm");
        auto model = std::make_shared<std::string>();
        auto output = std::make_shared<std::string>();
        command->add_option("MODEL", *model, "Model file (.mdl)")->required();
        command->add_option("-o,--output", *output, "Listing to write (.asm, - for stdout)")
            ->required();
        command->callback([model, output] {
            const Output out(*output, Output::Stream::Text);
            const auto loaded = loadModel(*model);
            out.write([&](const std::string& path) { loaded->exportASM(path); });
            if (!out.toStandardOutput()) std::cout << "wrote listing " << *output << "\n";
        });
    }
    {
        auto* command =
            addCommand(app, "export-flt", "Write a model as an OpenFlight database (16.0)",
                       "velmora export-flt MODEL.mdl -o OUT.flt [--tex-format EXT] [--no-attr]");
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
            // The attribute files go beside the database: more than one file, no stdout.
            const Output out(*output, Output::Stream::Refused);
            const auto loaded = loadModel(*model);
            out.write(
                [&](const std::string& path) { loaded->exportFLT(path, *texFormat, !*noAttr); });
            std::cout << "wrote OpenFlight database " << *output;
            if (!*noAttr && loaded->TextureList()->Count() > 0) {
                std::cout << " and " << loaded->TextureList()->Count()
                          << " texture attribute file(s) beside it";
            }
            std::cout << "\n";
        });
    }
}

}  // namespace tool
