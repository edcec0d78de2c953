/* Velmora from C (and from any language that calls C: ctypes, cffi, P/Invoke, Delphi).
 *
 * The library velmora_c (libvelmora_c.so, velmora_c.dll) opens a scenery model, tells what it
 * holds, edits it, saves it, exports it, hands out the geometry of its walk, and finds the models
 * of a compiled scenery file. Handles are opaque; every text is UTF-8 (model texts are decoded
 * from Windows-1252 where they appear in JSON) and every path is UTF-8.
 *
 * No failure leaves the library as an exception. A function that gives a handle gives NULL on
 * failure; one that gives an int gives one of the codes below. Either way velmora_last_error()
 * and its companions then tell what failed, for the calling thread, until its next failure.
 *
 * Texts and arrays that a function gives belong to the handle they came from and stay valid
 * until the handle is closed or the same function is called on it again.
 *
 *     velmora_model* model = velmora_open("building.mdl");
 *     if (!model) { fprintf(stderr, "%s\n", velmora_last_error()); return 1; }
 *     puts(velmora_info_json(model));
 *     if (velmora_add_kill_shadow(model) != VELMORA_OK ||
 *         velmora_save(model, "out.mdl") != VELMORA_OK)
 *         fprintf(stderr, "%s\n", velmora_last_error());
 *     velmora_close(model);
 */
#ifndef VELMORA_C_H
#define VELMORA_C_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#if defined(VELMORA_C_BUILDING)
#define VELMORA_C_API __declspec(dllexport)
#else
#define VELMORA_C_API __declspec(dllimport)
#endif
#else
#define VELMORA_C_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* What the functions that give an int give. */
enum {
    VELMORA_OK = 0,
    /* The library failed (a damaged file, a file that can't be written ...): see the last error. */
    VELMORA_FAILED = 1,
    /* An edit was refused, since it would lose or misstate something of the model; the last error
     * says what, in the words of the velmora tool, and "force": true does it anyway. The model is
     * unchanged. */
    VELMORA_REFUSED = 2,
    /* An argument was wrong: a NULL handle or path, options that are not the edit's. */
    VELMORA_BAD_ARGUMENT = 3
};

typedef struct velmora_model velmora_model;
typedef struct velmora_scan velmora_scan;
typedef struct velmora_geometry velmora_geometry;

/* The library's version, "0.0.335". */
VELMORA_C_API const char* velmora_version(void);

/* The last failure of this thread, in one line with where it lies (the file, the section and
 * byte); "" before any. */
VELMORA_C_API const char* velmora_last_error(void);
/* Its number: 100 for the library's own errors, the platform's number (5, 9, 53, 70, 76 ...)
 * otherwise; 0 before any. */
VELMORA_C_API int velmora_last_error_number(void);
/* All of it as a JSON object: "message", "number", "source", "description", "refused" (true
 * for a refused edit) and, where known, "file", "section", "offset", "command", "detail" (what
 * happened, in plain words) and "reasons" (what a refused edit would do wrong, a line each). */
VELMORA_C_API const char* velmora_last_error_json(void);

/* Loads a model file (.mdl); NULL when it fails. */
VELMORA_C_API velmora_model* velmora_open(const char* path);
VELMORA_C_API void velmora_close(velmora_model* model);
/* Saves the model: written beside `path` and moved into place only when whole. */
VELMORA_C_API int velmora_save(velmora_model* model, const char* path);

/* The object that `velmora info --json` prints for the model; NULL when it fails. */
VELMORA_C_API const char* velmora_info_json(velmora_model* model);
/* The object that `velmora commands --json` prints for the model; NULL when it fails. */
VELMORA_C_API const char* velmora_commands_json(velmora_model* model);
/* The vertex table: 8 floats a vertex (x, y, z, nx, ny, nz, tx, ty) in the model's axes (x east,
 * y up, z north); `count` gets the number of vertices. NULL when it fails. */
VELMORA_C_API const float* velmora_vertices(velmora_model* model, size_t* count);

/* Edits the model in memory (save it with velmora_save). `options_json` is a JSON object of the
 * options of `velmora edit` by their long names: {"add-kill-shadow": true, "condition":
 * ["between 798 2 5"], "combine": "or", "force": true}. Gives VELMORA_OK, VELMORA_REFUSED,
 * VELMORA_BAD_ARGUMENT for options it doesn't know or values of the wrong kind, or
 * VELMORA_FAILED. */
VELMORA_C_API int velmora_edit(velmora_model* model, const char* options_json);
VELMORA_C_API int velmora_add_kill_shadow(velmora_model* model);
VELMORA_C_API int velmora_fix_lights(velmora_model* model);
/* What the last successful edit did, a line each, as the tool says it. */
VELMORA_C_API const char* velmora_edit_said(velmora_model* model);

/* glTF 2.0: a .glb, or a .gltf with its files beside it. Images of the textures are looked up in
 * `texture_folder` (NULL or "": where the model names them); `double_sided` non-zero shows both
 * sides of every face. */
VELMORA_C_API int velmora_export_gltf(velmora_model* model, const char* path,
                                      const char* texture_folder, int double_sided);
/* An OpenFlight database; `texture_extension` replaces .bmp in texture names (NULL: "bmp");
 * `attribute_files` non-zero writes a texture attribute file beside it for each texture. */
VELMORA_C_API int velmora_export_flt(velmora_model* model, const char* path,
                                     const char* texture_extension, int attribute_files);
/* A BGLC-style assembler listing. */
VELMORA_C_API int velmora_export_asm(velmora_model* model, const char* path);

/* A BGL_LIGHT that the walk comes to. */
typedef struct velmora_light {
    float position[3]; /* model axes */
    uint32_t colour;   /* 0xAARRGGBB */
    int32_t type;
    int32_t command; /* 1-based position of the command */
} velmora_light;

/* What the walk over the command stream draws. With `day` 0 the walk draws every part (every
 * season and size branch); with a day of the year (1 to 366) it draws what the simulator shows
 * on that day at full detail. NULL when it fails. */
VELMORA_C_API velmora_geometry* velmora_walk(velmora_model* model, int day);
VELMORA_C_API void velmora_geometry_close(velmora_geometry* geometry);
/* The corners, each once: 3 floats a corner for positions and normals, 2 for texture
 * coordinates as the vertices give them (tx, ty), all in the model's axes. */
VELMORA_C_API size_t velmora_geometry_corner_count(const velmora_geometry* geometry);
VELMORA_C_API const float* velmora_geometry_positions(const velmora_geometry* geometry);
VELMORA_C_API const float* velmora_geometry_normals(const velmora_geometry* geometry);
VELMORA_C_API const float* velmora_geometry_uvs(const velmora_geometry* geometry);
/* The triangles: 3 corner indices each, in the order the model gives them; a triangle's front
 * faces (c - a) x (b - a) in the model's axes. Beside each triangle its 0-based material and
 * texture (-1 for none), the 1-based position of the command that drew it, and that of the
 * SET_MATERIAL in force (0 before any). */
VELMORA_C_API size_t velmora_geometry_triangle_count(const velmora_geometry* geometry);
VELMORA_C_API const uint32_t* velmora_geometry_indices(const velmora_geometry* geometry);
VELMORA_C_API const int32_t* velmora_geometry_materials(const velmora_geometry* geometry);
VELMORA_C_API const int32_t* velmora_geometry_textures(const velmora_geometry* geometry);
VELMORA_C_API const int32_t* velmora_geometry_commands(const velmora_geometry* geometry);
VELMORA_C_API const int32_t* velmora_geometry_surface_commands(const velmora_geometry* geometry);
/* The model's materials: 17 floats each, diffuse, ambient, specular and emissive r, g, b, a,
 * then the power. */
VELMORA_C_API size_t velmora_geometry_material_count(const velmora_geometry* geometry);
VELMORA_C_API const float* velmora_geometry_material_values(const velmora_geometry* geometry);
VELMORA_C_API size_t velmora_geometry_light_count(const velmora_geometry* geometry);
VELMORA_C_API const velmora_light* velmora_geometry_lights(const velmora_geometry* geometry);

/* Finds the models of an XML-style compiled scenery file (.bgl); NULL when it fails. */
VELMORA_C_API velmora_scan* velmora_scan_open(const char* path);
VELMORA_C_API void velmora_scan_close(velmora_scan* scan);
/* The records that `velmora scan --json` prints for the file, as a JSON array. */
VELMORA_C_API const char* velmora_scan_json(velmora_scan* scan);
VELMORA_C_API int velmora_scan_count(const velmora_scan* scan);
/* The model at `index` (0-based) as a model of its own, to be closed with velmora_close; NULL for
 * an index out of range. */
VELMORA_C_API velmora_model* velmora_scan_model(velmora_scan* scan, int index);

#ifdef __cplusplus
}
#endif

#endif
