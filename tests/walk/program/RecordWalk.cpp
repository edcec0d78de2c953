// A host program built against a library without the preview: it records the draw walk of a
// model through DrawListRecorder, checks that it drew every triangle of the stream, and that a
// member which needs an OpenGL context fails with an error rather than a link error.
#include <velmora/velmora.h>

#include <iostream>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: record-walk MODEL.mdl\n";
        return 2;
    }
    velmora::MDLObject model;
    model.readMDL(argv[1]);
    velmora::DrawListRecorder recorder;
    model.glGenerateDrawList(recorder);

    int triangles = 0;
    for (const auto& operation : recorder.operations())
        triangles += operation.name == "glBegin";
    int items = 0;
    for (const auto& command : *model.BGLCommandList())
        items += command->opcode() == velmora::DRAW_TRI_LIST_ITEM;
    std::cout << "operations " << recorder.operations().size() << "\ntriangles " << triangles
              << "\n";

    try {
        velmora::OpenGLPreviewObject preview;
        preview.initOpenGL(1);
        std::cout << "initOpenGL did not fail\n";
        return 1;
    } catch (const velmora::Error& e) {
        std::cout << "initOpenGL: " << e.what() << "\n";
    }
    return triangles > 0 && triangles == items ? 0 : 1;
}
