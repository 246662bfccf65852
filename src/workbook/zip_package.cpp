#include "workbook/zip_package.hpp"

#include <zip.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace korvex::xlsx {

namespace {

std::string zipErrorText(zip_error_t* e) {
  const char* text = zip_error_strerror(e);
  return text != nullptr ? text : "未知错误";
}

// A read-only archive over a byte buffer the caller keeps alive.
struct Reader {
  zip_t* zip = nullptr;
  ~Reader() {
    if (zip != nullptr) zip_discard(zip);
  }
  bool open(const std::string& bytes, int flags, std::string& error) {
    zip_error_t err;
    zip_error_init(&err);
    zip_source_t* src = zip_source_buffer_create(bytes.data(), bytes.size(), 0, &err);
    if (src == nullptr) {
      error = zipErrorText(&err);
      zip_error_fini(&err);
      return false;
    }
    zip = zip_open_from_source(src, flags, &err);
    if (zip == nullptr) {
      zip_source_free(src);
      error = "不是 zip 格式的文件 (" + zipErrorText(&err) + ")";
      zip_error_fini(&err);
      return false;
    }
    zip_error_fini(&err);
    return true;
  }
};

}  // namespace

bool ZipPackage::load(std::string bytes, std::string& error) {
  archive_ = std::move(bytes);
  names_.clear();
  changes_.clear();
  Reader r;
  if (!r.open(archive_, ZIP_RDONLY, error)) return false;
  const zip_int64_t n = zip_get_num_entries(r.zip, 0);
  for (zip_int64_t i = 0; i < n; ++i) {
    const char* name = zip_get_name(r.zip, static_cast<zip_uint64_t>(i), 0);
    if (name != nullptr) names_.emplace_back(name);
  }
  // Two entries of one name: readers differ in which they take, so no
  // patch of either could be sure to be seen.
  std::vector<std::string_view> sorted(names_.begin(), names_.end());
  std::sort(sorted.begin(), sorted.end());
  if (const auto twice = std::adjacent_find(sorted.begin(), sorted.end()); twice != sorted.end()) {
    error = "zip 包中有两个同名的部件 " + std::string(*twice);
    return false;
  }
  return true;
}

bool ZipPackage::has(std::string_view name) const {
  if (auto it = changes_.find(name); it != changes_.end()) return it->second.has_value();
  return std::find(names_.begin(), names_.end(), name) != names_.end();
}

std::optional<std::string> ZipPackage::read(std::string_view name, std::string& error) const {
  if (auto it = changes_.find(name); it != changes_.end()) return it->second;
  if (std::find(names_.begin(), names_.end(), name) == names_.end()) return std::nullopt;
  Reader r;
  if (!r.open(archive_, ZIP_RDONLY, error)) return std::nullopt;
  const std::string key(name);
  zip_stat_t st;
  if (zip_stat(r.zip, key.c_str(), 0, &st) != 0 || (st.valid & ZIP_STAT_SIZE) == 0) {
    error = "无法读取 " + key;
    return std::nullopt;
  }
  // The declared size is only a claim: it is checked before anything is
  // allocated, and the inflated bytes are counted as they come.
  const auto tooLarge = [&] {
    error = key + " 解压后超过部件大小上限 (" + std::to_string(partLimit_) + " 字节)";
  };
  if (st.size > partLimit_) {
    tooLarge();
    return std::nullopt;
  }
  zip_file_t* f = zip_fopen(r.zip, key.c_str(), 0);
  if (f == nullptr) {
    error = "无法读取 " + key + " (" + zip_strerror(r.zip) + ")";
    return std::nullopt;
  }
  std::string out;
  char buffer[1 << 16];
  bool broken = false;
  for (;;) {
    const zip_int64_t got = zip_fread(f, buffer, sizeof buffer);
    if (got <= 0) {
      broken = got < 0;
      break;
    }
    if (static_cast<zip_uint64_t>(got) > partLimit_ - out.size()) {
      zip_fclose(f);
      tooLarge();
      return std::nullopt;
    }
    out.append(buffer, static_cast<std::size_t>(got));
  }
  zip_fclose(f);
  if (broken || out.size() != st.size) {
    error = "无法读取 " + key + " (数据损坏)";
    return std::nullopt;
  }
  return out;
}

void ZipPackage::put(std::string name, std::string bytes) {
  changes_[std::move(name)] = std::move(bytes);
}

void ZipPackage::remove(std::string_view name) { changes_[std::string(name)] = std::nullopt; }

bool ZipPackage::write(std::string& out, std::string& error) const {
  zip_error_t err;
  zip_error_init(&err);
  // libzip rewrites the archive into the writable buffer source; entries
  // that are not changed are copied with their compressed data as it is.
  // The source gets a copy of its own: libzip may reuse and free the
  // buffer it rewrites.
  void* copy = nullptr;
  if (!archive_.empty()) {
    copy = std::malloc(archive_.size());
    if (copy == nullptr) {
      error = "内存不足";
      return false;
    }
    std::memcpy(copy, archive_.data(), archive_.size());
  }
  zip_source_t* src = zip_source_buffer_create(copy, archive_.size(), 1, &err);
  if (src == nullptr) {
    std::free(copy);
    error = zipErrorText(&err);
    zip_error_fini(&err);
    return false;
  }
  zip_source_keep(src);
  std::unique_ptr<zip_source_t, void (*)(zip_source_t*)> keep(src, zip_source_free);
  zip_t* zip = zip_open_from_source(src, archive_.empty() ? ZIP_TRUNCATE : 0, &err);
  if (zip == nullptr) {
    error = zipErrorText(&err);
    zip_error_fini(&err);
    return false;
  }
  zip_error_fini(&err);
  const auto fail = [&](std::string what) {
    error = std::move(what) + " (" + zip_strerror(zip) + ")";
    zip_discard(zip);
    return false;
  };
  for (const auto& [name, bytes] : changes_) {
    const zip_int64_t index = zip_name_locate(zip, name.c_str(), 0);
    if (!bytes) {
      if (index >= 0 && zip_delete(zip, static_cast<zip_uint64_t>(index)) != 0) {
        return fail("无法删除 " + name);
      }
      continue;
    }
    zip_source_t* data = zip_source_buffer(zip, bytes->data(), bytes->size(), 0);
    if (data == nullptr) return fail("无法写入 " + name);
    const zip_int64_t result =
        index >= 0 ? zip_file_replace(zip, static_cast<zip_uint64_t>(index), data, 0)
                   : zip_file_add(zip, name.c_str(), data, ZIP_FL_ENC_UTF_8);
    if (result < 0) {
      zip_source_free(data);
      return fail("无法写入 " + name);
    }
  }
  if (zip_close(zip) != 0) return fail("无法生成 zip 文件");

  zip_stat_t st;
  if (zip_source_stat(src, &st) != 0 || zip_source_open(src) != 0) {
    error = "无法生成 zip 文件";
    return false;
  }
  out.assign(static_cast<std::size_t>(st.size), '\0');
  const zip_int64_t got = zip_source_read(src, out.data(), st.size);
  zip_source_close(src);
  if (got < 0 || static_cast<zip_uint64_t>(got) != st.size) {
    error = "无法生成 zip 文件";
    return false;
  }
  return true;
}

}  // namespace korvex::xlsx
