/// \file
/// IUndoManager: the document-wide list of undo steps; IUndoTransactionManager: how a user action
/// that changes several participants becomes one step; RAII::UndoTransactionGuard: the scope
/// guard that brackets such an action.
///
///   {
///     RAII::UndoTransactionGuard transaction(manager->GetTransactionManager());
///     manager->Add(&shapeA);          // gathered, not yet a step
///     manager->Add(&shapeB);
///   }                                 // committed: one step holding shapeA and shapeB
///   if (manager->IsUndoEnabled()) manager->Undo();   // shapeB, then shapeA, step back
///
/// The manager is also the observer of its participants' drawer events: while a transaction,
/// an undo or a redo is under way it gathers them, and it delivers them to its own observers
/// once, in a fixed order, at the end (UndoManager.h says which). Observers register through the
/// transaction interface.
///
/// Threads: none of its own and no locks; one thread at a time (the document's). Observers are
/// called on the calling thread.
#pragma once

#include <cstdint>

#include "canvaro/Undo/IDrawerEventHandler.h"
#include "canvaro/Undo/IMultiUndoItem.h"
#include "canvaro/foundation/ToolsId.h"
#include "kelbra/Drevin/ISerializer.h"
#include "kelbra/RefCount.h"

namespace Kelbra::Canvaro {

class IUndoTransactionManager {
 public:
  virtual ~IUndoTransactionManager() = default;

  /// Starts gathering: participants added from now on form one step at commit. Events that were
  /// pending are dropped.
  virtual void TransactionStart() = 0;
  /// Ends gathering and makes one step of what was added (none when nothing was), then delivers
  /// the gathered events.
  virtual void TransactionCommit() = 0;
  /// Ends gathering, undoes every participant added since the start (last first) and makes no
  /// step. Nothing is delivered.
  virtual void TransactionRollback() = 0;

  /// Adds an observer of the manager's own events (null and duplicates are ignored). Not owned.
  virtual void RegisterHandler(IDrawerEventHandler* handler) = 0;
  /// Removes an observer; unknown ones are ignored.
  virtual void UnregisterHandler(IDrawerEventHandler* handler) = 0;
};

class IUndoManager : public virtual IRefCountable,
                     public virtual IToolsId,
                     public virtual IDrawerEventHandler {
 public:
  /// False only at the base step (0), which is never undone. An empty manager answers true:
  /// callers ask once a first step exists.
  virtual bool IsUndoEnabled() const = 0;
  /// True when a step after the current one exists.
  virtual bool IsRedoEnabled() const = 0;
  /// Undoes the current step: every participant of it, last first. Does nothing at the base
  /// step or on an empty manager (ask IsUndoEnabled first). An exception from a participant
  /// passes through after the gathered events have been delivered.
  virtual void Undo() = 0;
  /// Redoes the next step: every participant of it, first first. Does nothing when there is no
  /// next step.
  virtual void Redo() = 0;
  /// This manager's transaction interface.
  virtual IUndoTransactionManager& GetTransactionManager() = 0;
  /// Bytes of picture data the manager holds: none.
  virtual std::uint64_t GetCoreSize() const = 0;
  /// Makes `item` known under its GetMultiName(), so that a saved step list can name it. A name
  /// already known keeps its first participant.
  virtual void SetAvailableItem(IMultiUndoItem* item) = 0;
  /// Records that `item` changed: a new step, dropping the redo steps, or part of the open
  /// transaction.
  virtual void Add(IMultiUndoItem* item) = 0;
  /// Drops the redo steps and every participant's own redo tail, and releases the frames from
  /// the storage that no remaining step needs.
  virtual void Truncate() = 0;

  // ---- beyond the document's needs: for hosts, tools and tests ----

  /// Number of steps, redo steps included.
  virtual std::size_t GetStepCount() const = 0;
  /// Index of the step in force; -1 when there is none.
  virtual std::int32_t GetCurrentStep() const = 0;
};

using IUndoManagerPtr = boost::intrusive_ptr<IUndoManager>;

namespace RAII {

/// Starts a transaction on construction; on destruction commits it when marked to commit (the
/// default), rolls it back otherwise. The destructor never throws: a failure of the commit (an
/// observer that throws) or of the rollback is logged at error severity and goes no further, so
/// a full disk met while rolling back never ends the process.
///
///   RAII::UndoTransactionGuard guard(manager->GetTransactionManager(), /*commit=*/false);
///   DoTheEdits();            // may throw: the edits are rolled back
///   guard.SetCommit(true);   // they succeeded: keep them as one step
class UndoTransactionGuard {
 public:
  explicit UndoTransactionGuard(IUndoTransactionManager& manager, bool commit = true)
      : manager_(manager), commit_(commit) {
    manager_.TransactionStart();
  }
  ~UndoTransactionGuard() noexcept;
  UndoTransactionGuard(const UndoTransactionGuard&) = delete;
  UndoTransactionGuard& operator=(const UndoTransactionGuard&) = delete;

  void SetCommit(bool commit) { commit_ = commit; }
  bool GetCommit() const { return commit_; }

 private:
  IUndoTransactionManager& manager_;
  bool commit_;
};

}  // namespace RAII

}  // namespace Kelbra::Canvaro
