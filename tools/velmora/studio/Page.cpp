#include "Studio.h"

namespace tool::studio {

namespace {

// Lists the models with their thumbnails; the cookie set with the page carries the token.
const char* const kPage = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<title>Velmora Studio</title>
<style>
body { font-family: sans-serif; margin: 1em; }
ul { list-style: none; padding: 0; display: flex; flex-wrap: wrap; gap: 1em; }
li { width: 256px; }
img { width: 256px; height: 192px; background: #9eb9d9; }
</style>
</head>
<body>
<h1>Velmora Studio</h1>
<p>The studio's page is coming; for now, the models it serves.</p>
<ul id="models"></ul>
<script>
fetch('/api/models').then(r => r.json()).then(models => {
  const list = document.getElementById('models');
  for (const m of models) {
    const item = document.createElement('li');
    const picture = document.createElement('img');
    picture.src = '/api/models/' + m.id + '/thumbnail.png';
    picture.alt = m.file;
    const name = document.createElement('div');
    name.textContent = m.folder + '/' + m.file + (m.editable ? '' : ' #' + m.model) +
                       (m.guard ? ' when ' + m.guard : '');
    item.append(picture, name);
    list.append(item);
  }
});
</script>
</body>
</html>
)";

}  // namespace

void addPage(httplib::Server& server) {
    server.Get("/", [](const httplib::Request&, httplib::Response& response) {
        response.set_header("Cache-Control", "no-store");
        response.set_content(kPage, "text/html; charset=utf-8");
    });
}

}  // namespace tool::studio
