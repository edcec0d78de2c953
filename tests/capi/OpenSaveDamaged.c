/* Opens a model through the C interface, reads its info, saves it and compares the bytes, then
 * opens a damaged copy and expects a message that names it.
 *     test_capi MODEL.mdl SCRATCH_FOLDER (made when missing) */
#include <velmora/velmora_c.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#ifdef _WIN32
#include <direct.h>
#define makeFolder(path) _mkdir(path)
#else
#define makeFolder(path) mkdir(path, 0777)
#endif

static int failures = 0;

static void check(int ok, const char* what) {
    if (!ok) {
        fprintf(stderr, "FAILED: %s (last error: %s)\n", what, velmora_last_error());
        ++failures;
    }
}

static char* readAll(const char* path, long* size) {
    FILE* file = fopen(path, "rb");
    char* bytes;
    if (!file) return NULL;
    fseek(file, 0, SEEK_END);
    *size = ftell(file);
    fseek(file, 0, SEEK_SET);
    bytes = malloc((size_t)*size + 1);
    if (fread(bytes, 1, (size_t)*size, file) != (size_t)*size) *size = -1;
    fclose(file);
    return bytes;
}

int main(int argc, char** argv) {
    char saved[1024], damaged[1024];
    long size = 0, savedSize = 0;
    char *original, *copy;
    const char* info;
    velmora_model* model;
    FILE* file;
    if (argc != 3) return 2;
    makeFolder(argv[2]);
    snprintf(saved, sizeof saved, "%s/saved.mdl", argv[2]);
    snprintf(damaged, sizeof damaged, "%s/damaged.mdl", argv[2]);

    model = velmora_open(argv[1]);
    check(model != NULL, "the sample opens");
    if (!model) return 1;
    info = velmora_info_json(model);
    check(info != NULL && strstr(info, "\"counts\":{\"commands\":") != NULL, "info has counts");
    check(info != NULL && strstr(info, argv[1]) != NULL, "info names the file");
    check(velmora_save(model, saved) == VELMORA_OK, "the model saves");
    velmora_close(model);

    original = readAll(argv[1], &size);
    copy = readAll(saved, &savedSize);
    check(
        original && copy && size > 0 && size == savedSize && !memcmp(original, copy, (size_t)size),
        "the saved model is the original byte for byte");

    /* The head of the model and no more: its sections run past the end. */
    file = fopen(damaged, "wb");
    check(file != NULL, "the damaged copy can be written");
    if (!file) return 1;
    fwrite(original, 1, 40, file);
    fclose(file);
    check(velmora_open(damaged) == NULL, "a damaged model doesn't open");
    check(strstr(velmora_last_error(), damaged) != NULL, "the message names the file");
    check(velmora_last_error_number() != 0, "the failure has a number");
    check(velmora_save(NULL, saved) == VELMORA_BAD_ARGUMENT, "a NULL model is refused");
    free(original);
    free(copy);
    if (failures == 0)
        printf("velmora %s: open, info, save and a damaged file are right\n", velmora_version());
    return failures == 0 ? 0 : 1;
}
