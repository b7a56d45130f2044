#include "writer.h"

namespace vxtile {

namespace {

bool endsWith(const std::string& text, const std::string& ending) {
  return text.size() > ending.size() && text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

// Voxels that are only calculated.
class NullWriter : public Writer {
 public:
  void write(const Box&, const unsigned char*) override {}
  void finish() override {}
};

}  // namespace

Format formatOf(const std::string& path) {
  if (path.empty()) return Format::none;
  if (endsWith(path, ".png")) return Format::png;
  if (endsWith(path, ".nii")) return Format::nifti;
  if (endsWith(path, ".nii.gz")) return Format::compressedNifti;
  if (endsWith(path, ".raw")) return Format::raw;
  throw Failure(ExitCode::usage, path + ": the ending is none of .png, .nii, .nii.gz, .raw");
}

std::unique_ptr<Writer> makeWriter(const std::string& path, const Volume& volume) {
  const Format format = formatOf(path);
  if (format != Format::png && (volume.flip.horizontal || volume.flip.vertical)) {
    throw Failure(ExitCode::network, volume.name + ": only a .png picture can be flipped");
  }
  switch (format) {
    case Format::png:
      return makePngWriter(path, volume);
    case Format::nifti:
      return makeNiftiWriter(path, volume, false);
    case Format::compressedNifti:
      return makeNiftiWriter(path, volume, true);
    case Format::raw:
      return makeRawWriter(path, volume);
    case Format::none:
      break;
  }
  return std::make_unique<NullWriter>();
}

}  // namespace vxtile
