// Tables of what is known while one module is worked on. A table registers beside itself what empties it, so
// that nobody has to know all of them.
#pragma once

/// A namespace-level object beside a table; registered for the whole run.
class ModuleCache {
 public:
  enum class Holds {
    /// To the end of the module's analysis, and anew to the end of its generation.
    ForModule,
    /// Only as long as the tree stays as it is.
    ForTree,
    /// To the end of the run.
    ForRun,
  };

  /// `clear` empties the table.
  explicit ModuleCache(void (*clear)(), Holds holds = Holds::ForModule);
  ModuleCache(const ModuleCache&) = delete;
  ModuleCache& operator=(const ModuleCache&) = delete;

 private:
  friend void ClearModuleCaches();
  friend void ClearTreeCaches();
  friend void ClearAllCaches();

  void (*clear_)();
  Holds holds_;
  ModuleCache* next_;
};

/// Empties all but those that hold for the run: the work on a module has ended.
void ClearModuleCaches();
/// Empties those that hold for the tree: a pass has changed it.
void ClearTreeCaches();
/// Empties them all: a new run begins.
void ClearAllCaches();
