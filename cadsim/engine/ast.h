#pragma once

#include "cadsim/engine/scripterror.h"
#include "cadsim/engine/value.h"

#include <QHash>
#include <QString>

#include <memory>
#include <vector>

namespace cadsim {

// The syntax tree of a module. Nodes carry the position of their first token.

struct Expr;
struct Stmt;
using ExprPtr = std::unique_ptr<Expr>;
using StmtPtr = std::unique_ptr<Stmt>;
using Block = std::vector<StmtPtr>;

enum class ExprKind {
    Literal,  // value
    Name,     // name
    Member,   // object.name; object null inside With: .name
    Call,     // callee(args): a call, an array element or a default member
    Unary,    // op operand
    Binary,   // left op right
    Paren,    // (operand): forces a ByVal argument
    Me,       // unused placeholder for "Me"
    TypeOf,   // TypeOf operand Is name
};

enum class Op {
    Neg, Not,
    Add, Sub, Mul, Div, IntDiv, Mod, Pow, Concat,
    Eq, Ne, Lt, Gt, Le, Ge, Like, Is,
    And, Or, Xor, Eqv, Imp,
};

struct Arg {
    ExprPtr value; // null: omitted (a, , c)
    QString name;  // named argument name:=value, lower case
    SourcePos pos; // of the name, or else of the value
};

struct Expr {
    ExprKind kind;
    SourcePos pos;
    ScriptValue value;    // Literal
    QString name;         // Name / Member, as written
    QString lower;        // lower-case name
    Op op = Op::Add;      // Unary / Binary
    ExprPtr left;         // Member object, Call callee, Unary/Paren operand, Binary left
    ExprPtr right;        // Binary right
    std::vector<Arg> args; // Call
    explicit Expr(ExprKind k, SourcePos p) : kind(k), pos(p) {}
};

// A declared type: "As Long", "As Cadrix.ModelDoc2", "As String"...
enum class DeclType { Variant, Integer, Long, Double, Single, String, Boolean, Date, Object, Byte, Currency, UserType };

struct Dimension {
    ExprPtr lower; // null: Option Base
    ExprPtr upper;
};

struct VarDecl {
    QString name;
    QString lower;
    SourcePos pos;
    DeclType type = DeclType::Variant;
    bool isArray = false;           // declared with parentheses
    std::vector<Dimension> dims;    // empty with isArray: dynamic array
    bool isNew = false;             // As New ...
    QString className;              // the class of As New, or the user-defined type (lower case)
    ExprPtr member;                 // ReDim of a member: obj.items(...) or .items(...) in With
};

// Type name ... End Type: the fields in declaration order.
struct UserTypeDecl {
    QString name;
    QString lower;
    std::vector<VarDecl> fields;
    SourcePos pos;
};

enum class StmtKind {
    Dim, Const, ReDim, Assign, SetAssign, Call, If, For, ForEach, Do, While, Select, Exit,
    OnError, Resume, GoTo, Label, With, Open, Close, Print, Write, LineInput, DebugPrint, Erase,
    End, Name, LSet, RSet, Input,
};

enum class ExitKind { Sub, Function, For, Do, Property };
enum class OnErrorMode { GoTo, ResumeNext, Disable };
enum class ResumeMode { Here, Next, Label };
enum class LoopCond { None, While, Until };
enum class OpenMode { Input, Output, Append, Binary, Random };

struct IfBranch {
    ExprPtr condition; // null for Else
    Block body;
};

struct CaseTest {
    enum Kind { Value, Range, Is } kind = Value;
    Op op = Op::Eq;
    ExprPtr a;
    ExprPtr b;
};

struct CaseClause {
    std::vector<CaseTest> tests; // empty: Case Else
    Block body;
    SourcePos pos;
};

// One item of Print #/Debug.Print: a value followed by "," (next zone) or ";" (no space).
struct PrintItem {
    ExprPtr value; // may be null for a bare separator
    QChar separator;
};

struct Stmt {
    StmtKind kind;
    SourcePos pos;
    std::vector<VarDecl> decls;           // Dim / ReDim (with ReDim targets as decls)
    bool preserve = false;                // ReDim Preserve
    bool isStatic = false;                // Static: the values outlive the call
    ExprPtr target;                       // Assign/SetAssign target, Call expression, For variable, With object, LineInput var
    ExprPtr value;                        // Assign value, Const value, Select subject, For start, OnError..., Open path, Print/file number
    ExprPtr limit;                        // For end, Open file number
    ExprPtr step;                         // For step
    ExprPtr collection;                   // For Each
    std::vector<Arg> args;                // Call statement arguments, Close file numbers, Erase names, Input targets
    std::vector<IfBranch> branches;       // If
    Block body;                           // loops, With
    std::vector<CaseClause> cases;        // Select
    LoopCond preCond = LoopCond::None;    // Do While/Until ... Loop
    LoopCond postCond = LoopCond::None;   // Do ... Loop While/Until
    ExprPtr condition;                    // Do / While condition
    ExitKind exitKind = ExitKind::Sub;
    OnErrorMode onError = OnErrorMode::Disable;
    ResumeMode resume = ResumeMode::Here;
    QString label;                        // GoTo / OnError GoTo / Resume / Label, lower case
    OpenMode openMode = OpenMode::Input;
    std::vector<PrintItem> items;         // Print / Debug.Print
    QString constName;                    // Const
    explicit Stmt(StmtKind k, SourcePos p) : kind(k), pos(p) {}
};

struct Param {
    QString name;
    QString lower;
    bool byRef = true;
    bool optional = false;
    bool paramArray = false;
    bool isArray = false;
    DeclType type = DeclType::Variant;
    QString className; // the user-defined type of As, lower case
    ExprPtr defaultValue;
    SourcePos pos;
};

struct Procedure {
    QString name;
    QString lower;
    bool isFunction = false;
    bool isPrivate = false;
    DeclType returnType = DeclType::Variant;
    QString returnClass; // the user-defined type of As, lower case
    std::vector<Param> params;
    Block body;
    SourcePos pos;
    QHash<QString, int> labels; // label -> index in body, -1 for a label inside a block
};

// Declare [PtrSafe] Function name Lib "lib" [Alias "alias"] (params) As type
struct DeclareProc {
    QString name;
    QString lower;
    QString lib;
    QString alias;
    bool isFunction = true;
    std::vector<Param> params;
    SourcePos pos;
};

struct ConstDecl {
    QString lower;
    ExprPtr value;
    SourcePos pos;
};

struct Module {
    bool optionExplicit = false;
    bool compareText = false;
    int optionBase = 0;
    std::vector<VarDecl> variables;
    std::vector<ConstDecl> constants;
    std::vector<std::unique_ptr<Procedure>> procedures;
    std::vector<DeclareProc> declares;
    std::vector<std::unique_ptr<UserTypeDecl>> types;
    QHash<QString, const UserTypeDecl *> typeIndex; // lower name
    QHash<QString, Procedure *> procedureIndex;   // lower name
    QHash<QString, const DeclareProc *> declareIndex;
};

} // namespace cadsim
