#include "PatternProgram.h"

#include <algorithm>
#include <utility>

namespace name_pattern {

namespace {

class Translator {
public:
    explicit Translator(const Syntax& syntax) {
        for (const Node& node : syntax.nodes)
            add(node);
    }

    Program result();

private:
    /// The code of one operand, from `begin` to the `begin` of the next operand. It is entered at
    /// `entry` and left through `next` of the instruction `exit`, which is not set yet.
    struct Piece {
        std::int32_t begin;
        std::int32_t entry;
        std::int32_t exit;
    };

    std::int32_t size() const { return static_cast<std::int32_t>(m_code.size()); }

    std::int32_t append(Instruction::Kind kind, std::int32_t next = -1, std::int32_t other = -1) {
        m_code.push_back({kind, next, other});
        return size() - 1;
    }

    Piece take() {
        const Piece piece = m_pieces.back();
        m_pieces.pop_back();
        return piece;
    }

    void addLeaf(Instruction::Kind kind, std::int32_t other = -1) {
        const std::int32_t at = append(kind, -1, other);
        m_pieces.push_back({at, at, at});
    }

    void add(const Node& node) {
        switch (node.kind) {
        case NodeKind::Character:
            addLeaf(Instruction::Take, node.first);
            break;
        case NodeKind::Assertion:
            addLeaf(Instruction::Assert, node.first);
            break;
        case NodeKind::Sequence: {
            const Piece right = take();
            Piece& left = m_pieces.back();
            m_code[left.exit].next = right.entry;
            left.exit = right.exit;
            break;
        }
        case NodeKind::Choice: {
            const Piece right = take();
            Piece& left = m_pieces.back();
            const std::int32_t join = append(Instruction::Pass);
            m_code[left.exit].next = join;
            m_code[right.exit].next = join;
            left.entry = append(Instruction::Split, left.entry, right.entry);
            left.exit = join;
            break;
        }
        case NodeKind::Repetition:
            repeat(m_pieces.back(), node.first, node.last);
            break;
        default:
            addLeaf(Instruction::Pass);
            break;
        }
    }

    void repeat(Piece& piece, int least, int most) {
        if (most == 0) {
            m_code.resize(piece.begin);
            piece.entry = piece.exit = append(Instruction::Pass);
            return;
        }
        const bool endless = most == unlimited;
        const int count = endless ? std::max(least, 1) : most;
        const std::int32_t length = size() - piece.begin;
        for (int i = 1; i < count; ++i)
            copy(piece.begin, length);
        const auto nth = [&](int i) {
            const std::int32_t shift = i * length;
            return Piece{piece.begin + shift, piece.entry + shift, piece.exit + shift};
        };
        if (endless) {
            for (int i = 1; i < count; ++i)
                m_code[nth(i - 1).exit].next = nth(i).entry;
            const Piece last = nth(count - 1);
            const std::int32_t again = append(Instruction::Split, -1, last.entry);
            m_code[last.exit].next = again;
            piece.entry = least == 0 ? again : piece.entry;
            piece.exit = again;
            return;
        }
        if (least == count) {
            for (int i = 1; i < count; ++i)
                m_code[nth(i - 1).exit].next = nth(i).entry;
            piece.exit = nth(count - 1).exit;
            return;
        }
        // A Split before each optional copy also leads to the end.
        const std::int32_t end = append(Instruction::Pass);
        std::int32_t follower = end;
        for (int i = count - 1; i >= 0; --i) {
            const Piece one = nth(i);
            m_code[one.exit].next = follower;
            follower = i >= least ? append(Instruction::Split, one.entry, end) : one.entry;
        }
        piece.entry = follower;
        piece.exit = end;
    }

    void copy(std::int32_t begin, std::int32_t length) {
        const std::int32_t shift = size() - begin;
        for (std::int32_t i = begin; i < begin + length; ++i) {
            Instruction instruction = m_code[i];
            if (instruction.next >= 0)
                instruction.next += shift;
            if (instruction.kind == Instruction::Split)
                instruction.other += shift;
            m_code.push_back(instruction);
        }
    }

    /// The first instruction from `at` on that is no Pass. The Passes on the way are redirected to
    /// it (path compression), so that long chains are followed once.
    static std::int32_t skipPasses(std::vector<Instruction>& code, std::int32_t at) {
        std::int32_t target = at;
        while (target >= 0 && code[target].kind == Instruction::Pass)
            target = code[target].next;
        while (at != target) {
            const std::int32_t next = code[at].next;
            code[at].next = target;
            at = next;
        }
        return target;
    }

    std::vector<Instruction> m_code;
    std::vector<Piece> m_pieces;
};

Program Translator::result() {
    const Piece whole = take();
    m_code[whole.exit].next = append(Instruction::Accept);
    for (Instruction& instruction : m_code) {
        instruction.next = skipPasses(m_code, instruction.next);
        if (instruction.kind == Instruction::Split)
            instruction.other = skipPasses(m_code, instruction.other);
    }
    const std::int32_t start = skipPasses(m_code, whole.entry);
    return {std::move(m_code), start};
}

} // namespace

Program translate(const Syntax& syntax) {
    return Translator(syntax).result();
}

} // namespace name_pattern
